#include "drivers/simulated/description.h"

namespace vptzd {

std::uint32_t PresetShiftOf(const std::string& protocol) { return protocol == "NDIHX" ? 10 : 0; }

bool IsSerial(const std::string& protocol) { return protocol == "RS232"; }

}  // namespace vptzd
