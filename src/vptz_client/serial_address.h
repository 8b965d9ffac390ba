// The address of a serial line, "rs232://PORT/..." .
#ifndef VPTZ_SRC_VPTZ_CLIENT_SERIAL_ADDRESS_H
#define VPTZ_SRC_VPTZ_CLIENT_SERIAL_ADDRESS_H

#include <cstdio>

namespace vptz {

class SerialAddress {
 public:
  // False when the text does not fit; services keep such an address in 128
  // bytes, the terminating one included.
  template <class... Arguments>
  bool Format(const char* format, Arguments... arguments) {
    const int length = std::snprintf(text_, sizeof text_, format, arguments...);
    return length >= 0 && length < static_cast<int>(sizeof text_);
  }

  const char* text() const { return text_; }

 private:
  char text_[128] = "";
};

}  // namespace vptz

#endif
