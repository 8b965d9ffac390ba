// Who drives what runs until it is stopped, and what ends with a caller that has gone.
#ifndef VPTZ_SERVICE_FLEET_WATCHDOG_H
#define VPTZ_SERVICE_FLEET_WATCHDOG_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace vptzd {

// The caller that drives something, and how long that goes on without a sign of life
// from this caller; 0: for ever.
struct Driver {
  std::uint64_t caller = 0;
  std::chrono::nanoseconds grace{0};
};

// Watches one camera, of whatever kind, and knows of it only what is driven. A value:
// time passes by Advance.
class Watchdog {
 public:
  // What can be driven: pan, tilt, zoom, and the focus after them.
  static constexpr std::size_t kFocus = 3;
  template <class T>
  using PerDrive = std::array<T, 4>;

  // From now on the driver has it, from whomever it took it.
  void Take(std::size_t index, const Driver& driver) { drives_[index].emplace(driver); }

  // It does not run any more, or to an end of its own.
  void Free(std::size_t index) { drives_[index].reset(); }
  void FreeAll() { drives_ = {}; }

  // Begins the grace of everything that this caller drives anew.
  void GiveSignOfLife(std::uint64_t caller);

  // What is driven now.
  PerDrive<bool> Driven() const;

  // How long until a grace ends, at most `limit`.
  std::chrono::nanoseconds UntilNextEnd(std::chrono::nanoseconds limit) const;

  // Lets time pass, at most until the next end. Frees what has run out and tells it:
  // it is to be stopped.
  PerDrive<bool> Advance(std::chrono::nanoseconds elapsed);

 private:
  struct Drive {
    explicit Drive(const Driver& who) : driver(who) { Renew(); }
    void Renew();

    Driver driver;
    std::optional<std::chrono::nanoseconds> left;  // none: it never runs out
  };

  PerDrive<std::optional<Drive>> drives_;
};

}  // namespace vptzd

#endif
