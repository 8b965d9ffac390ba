#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "vptz_client/credentials.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto found = vptz::ReadCredentials(text);
  if (found && found->account.size() + found->credentials.size() > text.size()) std::abort();
  return 0;
}
