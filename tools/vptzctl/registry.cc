#include "command.h"
#include "describe.h"
#include "protocols.h"
#include "session.h"

namespace vptzctl {
namespace {

ExitCode DeviceList(Session& session) {
  List cameras = {"cameras", {}};
  if (!session.Given("--protocol")) {
    for (const CVptzDevice& device : *session.client().QueryDeviceAll())
      cameras.rows.push_back(Summary(device));
  } else {
    const std::string protocol = RequireProtocol(session.Text("--protocol"));
    session.result.SetArgument("protocol", protocol);
    for (const CVptzDevice* device : session.client().QueryDeviceByProtocol(protocol)) {
      cameras.rows.push_back(Summary(*device));
    }
  }
  session.result.lists = {cameras};
  return session.Finish(0);
}

Value Count(int count) { return static_cast<std::uint32_t>(count); }

ExitCode DeviceShow(Session& session) {
  const int id = static_cast<int>(session.camera().id);
  session.result.answers = Details(session.camera());
  session.result.answers.push_back(
      {"ptz_profile_count", Count(session.client().QueryPtzCountByDevice(id)), ""});
  session.result.answers.push_back(
      {"media_profile_count", Count(session.client().QueryMediaCountByDevice(id)), ""});
  session.result.lists = {PtzProfiles(session.camera()), MediaProfiles(session.camera())};
  return session.Finish(0);
}

}  // namespace

std::vector<Command> RegistryCommands() {
  return {
      {"device",
       "list",
       "Lists the cameras in the database. Needs no service.",
       {"QueryDeviceAll", "QueryDeviceByProtocol"},
       {Text("--protocol", "PROTOCOL", "only cameras of this protocol").Known(KnownProtocols())},
       {},
       DeviceList,
       Needs::kDatabase},
      {"device",
       "show",
       "Shows the database's data about a camera and its profiles. Needs no service.",
       {"QueryDeviceById", "QueryPtzCountByDevice", "QueryMediaCountByDevice"},
       {Camera()},
       {},
       DeviceShow,
       Needs::kDatabase},
  };
}

}  // namespace vptzctl
