#ifndef DORV_BUS_RANDOM_H
#define DORV_BUS_RANDOM_H

#include <sys/random.h>

#include <cstdint>
#include <random>

namespace dorv {

// A number that no other participant of the bus has drawn. Never 0.
inline std::uint64_t RandomNumber() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number) {
    std::random_device device;
    number = (static_cast<std::uint64_t>(device()) << 32) | device();
  }
  return number == 0 ? 1 : number;
}

}  // namespace dorv

#endif
