#include <zerklog.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <vptz/utils.h>

void ZERK_LOG_write_newline(int, int, const char*, int, const char*, const char*, ...) {}

namespace {

// The input's parts, split at its first two zero bytes.
struct Texts {
  std::string first, second, third;

  Texts(const std::uint8_t* data, std::size_t size) {
    const std::string all(reinterpret_cast<const char*>(data), size);
    const std::size_t one = all.find('\0');
    first = all.substr(0, one);
    if (one == std::string::npos) return;
    const std::size_t two = all.find('\0', one + 1);
    second = all.substr(one + 1, two == std::string::npos ? two : two - one - 1);
    if (two != std::string::npos) third = all.substr(two + 1);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;  // replacing may square the length
  const Texts texts(data, size);
  std::string text = texts.first;
  ReplaceString(&text, texts.second, texts.third);
  text = texts.first;
  StrReplace(text, texts.second, texts.third);
  for (const std::string& part : StrSplit(texts.first, texts.second)) {
    if (part.size() > texts.first.size()) std::abort();
  }
  std::string path;
  GetFilepathFromUri(texts.first, &path);
  ConvertModuleStrToId(texts.first);
  return 0;
}
