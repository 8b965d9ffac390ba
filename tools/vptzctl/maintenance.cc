#include "command.h"
#include "credentials.h"
#include "describe.h"
#include "password.h"
#include "protocols.h"
#include "serial_line.h"
#include "session.h"

namespace vptzctl {
namespace {

ExitCode Login(Session& session) {
  return session.Finish(session.camera().Login(session.Text("USER"), ReadPassword(session), session.timeout));
}

ExitCode Logout(Session& session) { return session.Finish(session.camera().Logout(session.timeout)); }

ExitCode Info(Session& session) {
  const int status = session.Flag("--full") ? session.camera().UpdateDeviceInfoFull(session.timeout)
                                            : session.camera().UpdateDeviceInfo(session.timeout);
  session.ReloadCamera();
  session.result.answers = Details(session.camera());
  return session.Finish(status);
}

// By its stored credentials. The library's own lookup of a slave asks the service
// about every device first, and tells no reason.
ExitCode SlaveByRecord(Session& session) {
  const CVptzDevice& slave = *session.slave();
  const std::optional<StoredLogin> login = ReadStoredLogin(slave.authorization);
  if (!login) return session.Fail(-1);
  return session.Finish(
      session.camera().SetSlaveDevice(slave.address, login->account, login->credentials, session.timeout));
}

ExitCode Slave(Session& session) {
  CVptzDevice& camera = session.camera();
  if (session.Flag("--none")) return session.Finish(camera.SetSlaveDeviceById(0, session.timeout));
  if (session.Given(kSlave)) return SlaveByRecord(session);
  const std::string credentials = session.Given("--account") ? ReadPassword(session) : "";
  return session.Finish(camera.SetSlaveDevice(session.Text("--address"), session.Text("--account"), credentials,
                                              session.timeout));
}

ExitCode ControlProtocol(Session& session) {
  const std::string protocol = ProtocolOrText(session.Text("PROTOCOL"));
  session.result.SetArgument("protocol", protocol);
  return session.Finish(session.camera().UpdateDeviceControlProtocol(protocol, session.timeout));
}

ExitCode Capabilities(Session& session) {
  const int status = session.camera().UpdateCapabilities(session.timeout);
  session.ReloadCamera();
  session.result.lists = {PtzProfiles(session.camera()), MediaProfiles(session.camera())};
  return session.Finish(status);
}

ExitCode DeclareSerial(Session& session) {
  VptzSerialDeviceParams params;
  params.name = session.Given("--name") ? session.Text("--name") : session.camera().host_name;
  params.line = session.Text("--line");
  params.baud_rate = session.Signed("--baud-rate");
  params.unit = session.Signed("--unit");
  return session.Finish(session.camera().UpdateDevice(&params, session.timeout));
}

ExitCode Declare(Session& session) {
  const CVptzDevice& camera = session.camera();
  if (camera.protocol == "RS232") return DeclareSerial(session);
  VptzNetworkDeviceParams params;
  params.name = session.Given("--name") ? session.Text("--name") : camera.host_name;
  params.address = session.Given("--address") ? session.Text("--address") : camera.address;
  params.user = session.Text("--user");
  if (session.Given("--user")) params.password = ReadPassword(session);
  return session.Finish(session.camera().UpdateDevice(&params, session.timeout));
}

// A camera keeps its address and protocol when it is added anew with these, and
// nothing but its name changes. The service knows it by its hardware address, or by
// its unique id when it has none.
ExitCode Rename(Session& session) {
  const CVptzDevice& camera = session.camera();
  if (camera.protocol == "RS232") {
    throw CommandError(
        {"serial_camera", "a camera on a serial line keeps the name that it was added with", ExitCode::kUsage});
  }
  const std::string& known_by = camera.mac.empty() ? camera.uuid : camera.mac;
  const bool has_scheme = camera.service_uri.find("://") != std::string::npos;
  return session.Finish(session.client().AddDevice(known_by, session.Text("NAME"), camera.protocol,
                                                   has_scheme ? camera.service_uri : camera.address, "", "",
                                                   session.timeout));
}

std::vector<Argument> With(std::vector<Argument> first, const std::vector<Argument>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Command SlaveRow() {
  const std::vector<Argument> arguments = {
      Camera(),
      Text(kSlave, kCamera, "id or name of the camera that becomes the slave, with its stored credentials")
          .Excludes({"--address", "--none"}),
      Text("--address", "ADDRESS", "address of the slave").Excludes({"--none"}),
      Text("--account", "USER", "account at the slave; the tool asks for its password").Needs("--address"),
      Flag("--none", "end the coupling"),
  };
  return {"device",
          "slave",
          "Couples a slave device to a camera, or ends the coupling.",
          {"SetSlaveDevice", "SetSlaveDeviceById"},
          With(arguments, PasswordArguments("--account")),
          {kSlave, "--address", "--none"},
          Slave};
}

Command DeclareRow() {
  const std::vector<Argument> arguments = {
      Camera(),
      Text("--name", "NAME", "its new name"),
      Text("--address", "ADDRESS", "its new address; only for a camera in the network"),
      Text("--user", "USER", "account at the camera; the tool asks for its password"),
      Text("--line", "LINE", "how the port is wired, a text of the service's; only for a serial camera"),
      BaudRate(),
      Unit(),
  };
  return {"device",
          "declare",
          "Adds a known camera anew with other settings: a serial camera as such, any other as VISCA over IP.",
          {"UpdateDevice", "AddDevice"},
          With(arguments, PasswordArguments("--user")),
          {},
          Declare};
}

}  // namespace

std::vector<Command> MaintenanceCommands() {
  return {
      {"device",
       "login",
       "Has the service log in to a camera. Asks for the password.",
       {"Login"},
       With({Camera(), Text("USER", "", "account at the camera")}, PasswordArguments()),
       {},
       Login},
      {"device", "logout", "Has the service log out of a camera.", {"Logout"}, {Camera()}, {}, Logout},
      {"device",
       "info",
       "Has the service read what a camera is and how it is, and then shows the database's data.",
       {"UpdateDeviceInfo", "UpdateDeviceInfoFull"},
       {Camera(), Flag("--full", "read everything")},
       {},
       Info},
      {"device",
       "capabilities",
       "Has the service read what a camera can do, and then shows the database's data.",
       {"UpdateCapabilities"},
       {Camera()},
       {},
       Capabilities},
      {"device",
       "protocol",
       "Sets the protocol by which the service controls a camera.",
       {"UpdateDeviceControlProtocol"},
       {Camera(), Text("PROTOCOL", "", "its name").Known(KnownProtocols())},
       {},
       ControlProtocol},
      {"device",
       "rename",
       "Gives a camera in the network another name.",
       {"AddDevice"},
       {Camera(), Text("NAME", "", "its new name")},
       {},
       Rename},
      SlaveRow(),
      DeclareRow(),
  };
}

}  // namespace vptzctl
