#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "address.h"
#include "names.h"
#include "request_identity.h"

namespace {

void RequireThat(bool condition) {
  if (!condition) std::abort();
}

// What is a name makes a topic from which it can be read again.
void UseAsName(const std::string& text) {
  if (!dorv::IsName(text.c_str())) return;
  RequireThat(!text.empty());
  // What follows a NUL is no part of the name.
  // cppcheck-suppress stlcstrAssignment
  const std::string name = text.c_str();
  RequireThat(name.find('+') == std::string::npos && name.find('#') == std::string::npos);
  RequireThat(dorv::SignalOf(dorv::Topic::Signal("vptz", name).c_str()) == name);
  RequireThat(dorv::MethodOf(dorv::Topic::Call("vptz", name).c_str(), "vptz") == name);
}

void UseAsTopic(const std::string& text) {
  dorv::MethodOf(text, "vptz");
  dorv::SignalOf(text);
  dorv::PresenceOf(text);
  dorv::IsReplyTopic(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  UseAsName(text);
  UseAsTopic(text);
  UseAsTopic("dorv/signal/" + text);
  dorv::IsServiceName(text.c_str());
  if (const auto address = dorv::Address::Parse(text.c_str())) RequireThat(!address->Text().empty());
  if (const auto identity = dorv::RequestIdentity::Decode(data, size)) {
    RequireThat(std::string(reinterpret_cast<const char*>(identity->Encode().data()), identity->kSize) == text);
  }
  return 0;
}
