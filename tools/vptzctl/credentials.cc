#include "credentials.h"

#include <nlohmann/json.hpp>

namespace vptzctl {
namespace {

bool TextOf(const nlohmann::json& object, const char* key, std::string* text) {
  const auto member = object.find(key);
  if (member == object.end() || !member->is_string()) return false;
  *text = member->get<std::string>();
  return text->find('\0') == std::string::npos;
}

}  // namespace

std::optional<StoredLogin> ReadStoredLogin(const std::string& authorization) {
  const auto stored = nlohmann::json::parse(authorization, nullptr, false);
  StoredLogin login;
  if (!stored.is_object() || !TextOf(stored, "account", &login.account)) return std::nullopt;
  if (!TextOf(stored, "credentials", &login.credentials)) return std::nullopt;
  return login;
}

}  // namespace vptzctl
