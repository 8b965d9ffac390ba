#include "command.h"
#include "prompt.h"
#include "serial_line.h"
#include "session.h"
#include "stored.h"

namespace vptzctl {
namespace {

constexpr int kUnknownId = -1004;  // the reference service's refusal for a port that it does not know

// The port under the one name by which the tool adds and removes it.
std::string Port(Session& session) {
  std::string port = DevicePath(session.Text("TTY"));
  session.result.SetArgument("tty", port);
  return port;
}

ExitCode SerialAdd(Session& session) {
  return session.Finish(session.client().AddUSBttyDevice(Port(session), session.timeout));
}

// Another client may have added it by its bare name.
ExitCode SerialRemove(Session& session) {
  const std::string port = Port(session);
  int status = session.client().RemoveUSBttyDevice(port, session.timeout);
  if (status == kUnknownId && port != session.Text("TTY")) {
    status = session.client().RemoveUSBttyDevice(session.Text("TTY"), session.timeout);
  }
  return session.Finish(status);
}

ExitCode SerialFlush(Session& session) {
  return session.Finish(session.client().FlushUSBttydevices(session.timeout));
}

ExitCode SerialConfig(Session& session) {
  return session.Finish(session.client().ConfigDevices(session.timeout));
}

ExitCode SerialReset2P0(Session& session) {
  return session.Finish(session.Text("STATE") == "on" ? session.client().EnableReset2P0(session.timeout)
                                                      : session.client().DisableReset2P0(session.timeout));
}

void AskForAll(Session& session, const std::string& port) {
  const std::vector<StoredCamera> cameras = StoredSerialCameras();
  if (cameras.empty()) return;
  std::vector<std::string> names;
  names.reserve(cameras.size());
  for (const StoredCamera& camera : cameras) names.push_back(CameraInWords(camera.id, camera.name));
  Confirm(session, "This sets the line of " + Joined(names, ", ") + " to " + port + " at " +
                       std::to_string(session.Integer("--baud-rate")) + " bits per second. Go on?");
}

ExitCode SerialLine(Session& session) {
  const std::string port = StoredPort(session.Text("PORT"));
  session.result.SetArgument("port", port);
  AskForAll(session, port);
  return session.Finish(session.client().UpdateAllRS232Devices(port, session.Signed("--baud-rate"),
                                                               session.Signed("--unit"),
                                                               session.Signed("--flags"), session.timeout));
}

ExitCode PowerOn(Session& session) { return session.Finish(session.client().PowerOnDevices(session.timeout)); }

ExitCode PowerOff(Session& session) {
  return session.Finish(session.client().PowerOffDevices(session.timeout));
}

// What positive results other than the reference service's mean is the
// service's own; the status tells them.
ExitCode PowerStatus(Session& session) {
  const int status = session.client().GetDevicesPowerStatus(session.timeout);
  Value power;
  if (status == 0) power = std::string("off");
  if (status == 1) power = std::string("on");
  session.result.answers = {{"power", power, ""}};
  return session.Answer(status);
}

Argument Tty() { return Text("TTY", "", "device path of the port, such as /dev/ttyUSB0"); }

Command LineRow() {
  return {"serial",
          "line",
          "Sets the line of all serial (RS-232) cameras. On a terminal it asks first.",
          {"UpdateAllRS232Devices"},
          {Text("PORT", "", "name of the port, such as ttyS0"), BaudRate(), Unit(),
           Integer("--flags", {0, kLargestSigned}, "line settings, a number of the service's")
               .Placeholder("N")
               .Else(std::uint32_t{0}),
           YesArgument()},
          {},
          SerialLine};
}

}  // namespace

std::vector<Command> PowerCommands() {
  return {
      LineRow(),
      {"serial", "add", "Adds a USB-serial port.", {"AddUSBttyDevice"}, {Tty()}, {}, SerialAdd},
      {"serial", "remove", "Removes a USB-serial port.", {"RemoveUSBttyDevice"}, {Tty()}, {}, SerialRemove},
      {"serial", "flush", "Forgets all USB-serial ports.", {"FlushUSBttydevices"}, {}, {}, SerialFlush},
      {"serial",
       "config",
       "Has the service read its device configuration again.",
       {"ConfigDevices"},
       {},
       {},
       SerialConfig},
      {"serial",
       "reset2p0",
       "Switches the service's reset-2P0 behaviour.",
       {"EnableReset2P0", "DisableReset2P0"},
       {Choice("STATE", {"on", "off"}, "what it is to be")},
       {},
       SerialReset2P0},
      {"power", "on", "Powers the devices on.", {"PowerOnDevices"}, {}, {}, PowerOn},
      {"power", "off", "Powers the devices off.", {"PowerOffDevices"}, {}, {}, PowerOff},
      {"power",
       "status",
       "Tells whether the devices are powered. Off is an answer, too: the exit code is 0.",
       {"GetDevicesPowerStatus"},
       {},
       {},
       PowerStatus},
  };
}

}  // namespace vptzctl
