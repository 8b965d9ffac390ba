#ifndef DORV_BUS_EVENT_H
#define DORV_BUS_EVENT_H

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace dorv {

// A flag that another thread can poll for.
class Event {
 public:
  Event() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
  ~Event() {
    if (valid()) {
      close(descriptor_);
    }
  }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  bool valid() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

  void Set() {
    const std::uint64_t one = 1;
    // Fails only when the flag is set a huge number of times already.
    [[maybe_unused]] const ssize_t written = write(descriptor_, &one, sizeof one);
  }

  void Clear() {
    std::uint64_t count;
    [[maybe_unused]] const ssize_t taken = read(descriptor_, &count, sizeof count);
  }

 private:
  int descriptor_;
};

}  // namespace dorv

#endif
