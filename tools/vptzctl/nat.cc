#include <sstream>

#include "command.h"
#include "session.h"

namespace vptzctl {
namespace {

NATType TypeOf(const Session& session) {
  const std::string type = session.Text("--type");
  if (type == "media") return NAT_MEDIA;
  if (type == "service") return NAT_SERVICE;
  return type == "http" ? NAT_HTTP : NAT_ALL;
}

[[noreturn]] void RefuseMapping(const std::string& text) {
  throw CommandError({"usage", "--map \"" + text + "\" is not six texts and two whole numbers between commas",
                      ExitCode::kUsage});
}

std::int32_t MappedNumber(const std::string& number, const std::string& mapping) {
  std::istringstream stream(number);
  std::int32_t value = 0;
  if (!(stream >> value) || !stream.eof()) RefuseMapping(mapping);
  return value;
}

VptzNATData MappingOf(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == ',') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  if (parts.size() != 8) RefuseMapping(text);
  return {parts[0],
          parts[1],
          parts[2],
          parts[3],
          parts[4],
          parts[5],
          MappedNumber(parts[6], text),
          MappedNumber(parts[7], text)};
}

ExitCode Enable(Session& session) {
  std::vector<VptzNATData> mappings;
  for (const std::string& text : session.Texts("--map")) mappings.push_back(MappingOf(text));
  return session.Finish(session.camera().EnableNAT(TypeOf(session), &mappings, session.timeout));
}

ExitCode Disable(Session& session) {
  return session.Finish(session.camera().DisableNAT(TypeOf(session), session.timeout));
}

ExitCode Clear(Session& session) { return session.Finish(session.client().ClearNAT(session.timeout)); }

struct Address {
  NATType type;
  const char* kind;
  std::string inside;
};

std::vector<Address> AddressesOf(const CVptzDevice& camera, NATType wanted) {
  std::vector<Address> all;
  for (const VptzMediaData& media : camera.media_list) all.push_back({NAT_MEDIA, "media", media.url});
  all.push_back({NAT_SERVICE, "service", camera.service_uri});
  all.push_back({NAT_HTTP, "http", camera.http_uri});
  std::vector<Address> found;
  for (const Address& address : all) {
    if (!address.inside.empty() && (wanted == NAT_ALL || wanted == address.type)) found.push_back(address);
  }
  return found;
}

ExitCode Query(Session& session) {
  List addresses = {"addresses", {}};
  for (const Address& address : AddressesOf(session.camera(), TypeOf(session))) {
    std::string outside = address.inside;
    const int status = session.camera().QueryNATuri(address.type, outside, session.timeout);
    if (status != 0) return session.Fail(status);
    addresses.rows.push_back({{"kind", std::string(address.kind), ""},
                              {"address", address.inside, ""},
                              {"outside", outside.empty() ? Value() : Value(outside), ""}});
  }
  session.result.lists = {addresses};
  return session.Finish(0);
}

Argument Type() {
  return Choice("--type", {"all", "media", "service", "http"},
                "which addresses: of streams, of the camera's service, of its web page")
      .Else(std::string("all"));
}

}  // namespace

std::vector<Command> NatCommands() {
  return {
      {"nat",
       "enable",
       "Makes a camera's addresses reachable from outside.",
       {"EnableNAT"},
       {Camera(), Type(),
        Texts("--map", "T1,...,T6,N1,N2", "a mapping: six texts and two whole numbers of the service's")},
       {},
       Enable},
      {"nat",
       "disable",
       "Makes them unreachable from outside again.",
       {"DisableNAT"},
       {Camera(), Type()},
       {},
       Disable},
      {"nat",
       "query",
       "Shows a camera's addresses as they are reachable from outside.",
       {"QueryNATuri"},
       {Camera(), Type()},
       {},
       Query},
      {"nat",
       "clear",
       "Makes all addresses of all cameras unreachable from outside again.",
       {"ClearNAT"},
       {},
       {},
       Clear},
  };
}

}  // namespace vptzctl
