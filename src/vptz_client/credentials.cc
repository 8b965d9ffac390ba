#include "vptz_client/credentials.h"

#include <cjson/cJSON.h>

#include <memory>

namespace vptz {
namespace {

struct JsonDeleter {
  void operator()(cJSON* json) const { cJSON_Delete(json); }
};
using Json = std::unique_ptr<cJSON, JsonDeleter>;

// The whole text must be one JSON value. The parser takes a NUL for white space
// or for the end of a text; JSON has none.
Json ParseJson(const std::string& text) {
  if (text.find('\0') != std::string::npos) return nullptr;
  return Json(cJSON_ParseWithLengthOpts(text.c_str(), text.size() + 1, nullptr, true));
}

bool TextOf(const cJSON* object, const char* key, std::string* text) {
  const char* const value = cJSON_GetStringValue(cJSON_GetObjectItemCaseSensitive(object, key));
  if (value == nullptr) return false;
  *text = value;
  return true;
}

}  // namespace

std::optional<Credentials> ReadCredentials(const std::string& text) {
  const Json stored = ParseJson(text);
  Credentials found;
  if (!TextOf(stored.get(), "account", &found.account)) return std::nullopt;
  if (!TextOf(stored.get(), "credentials", &found.credentials)) return std::nullopt;
  return found;
}

}  // namespace vptz
