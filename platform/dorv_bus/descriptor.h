// A file descriptor that is closed with its owner.
#ifndef DORV_BUS_DESCRIPTOR_H
#define DORV_BUS_DESCRIPTOR_H

#include <unistd.h>

namespace dorv {

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return descriptor_; }

 private:
  const int descriptor_;
};

}  // namespace dorv

#endif
