#include <unistd.h>
#include <zerklog.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include <vptz/config.h>

void ZERK_LOG_write_newline(int, int, const char*, int, const char*, const char*, ...) {}

namespace {

// In memory where that can be had: the file is written for each input.
std::string FilePath() {
  const char* const folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/vptz-fuzz-key-file." + std::to_string(getpid());
}

struct TemporaryFile {
  const std::string path = FilePath();
  ~TemporaryFile() { unlink(path.c_str()); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file;
  std::ofstream(file.path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  Config config(file.path.c_str());
  config.Load();
  constexpr int kBefore = -5;  // stays where the value is no number
  int timeout = kBefore;
  const int result = config.GetValue("MQTT", "timeout", 2, timeout);
  if (timeout == 0 || (result < 0 && timeout != 2 && timeout != kBefore)) std::abort();
  std::string text;
  config.GetValue("VPTZ", "ndi_preset_shift", "0", text);
  config.GetValue("VPTZ", "ndi_preset_shift", text);
  return 0;
}
