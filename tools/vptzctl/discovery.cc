#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>

#include <vptz/model/device.h>
#include <vptz/model/vptzmodel.h>

#include "camera.h"
#include "command.h"
#include "describe.h"
#include "interrupt.h"
#include "password.h"
#include "serial_line.h"
#include "session.h"
#include "signals.h"

namespace vptzctl {
namespace {

using Seconds = std::chrono::duration<double>;
using std::chrono::steady_clock;

constexpr char kFinished[] = "finish/search_device";

// The ids in the database. Not by the registry, which would ask the service
// about each device.
std::set<std::uint32_t> StoredIds() {
  std::vector<Device*> rows;
  Device::QueryAll(&rows, 0, 0);
  std::set<std::uint32_t> ids;
  for (const Device* row : rows) ids.insert(row->id());
  VptzModel::CleanQuery(&rows);
  return ids;
}

// One search: tells cameras that the database did not have before.
class Search {
 public:
  explicit Search(Session& session) : session_(session), known_(StoredIds()), before_(known_.size()) {}

  int Start() {
    VptzClient& client = session_.client();
    const int finish = client.SubscribeSearchDeviceFinishSignal(OnSignal);
    if (finish < 0) return finish;
    const int update = client.SubscribeUpdateDevicesSignal(OnSignal);
    if (update < 0) return update;
    return client.SearchDevice(session_.Text("--scope"), session_.Text("--protocols"), session_.timeout);
  }

  // Whether the search has ended; false after an interrupt or the time limit.
  bool Follow(const Interrupt& interrupt) {
    const Seconds limit(session_.Integer("--limit"));
    while (!interrupt.Arrived() && Elapsed() < limit && session_.output.Complete()) {
      TellProgress();
      const auto signal = TakeSignal(interrupt, std::min(Seconds(1), limit - Elapsed()));
      if (signal) ShowNew();
      if (signal && signal->name == kFinished) return true;
    }
    return false;
  }

  void End() {
    session_.client().UnSubscribeSearchDeviceFinishSignal();
    session_.client().UnSubscribeUpdateDevicesSignal();
  }

  Seconds Elapsed() const { return steady_clock::now() - begin_; }
  std::uint32_t found() const { return static_cast<std::uint32_t>(known_.size() - before_); }

 private:
  void ShowNew() {
    for (const std::uint32_t id : StoredIds()) {
      if (known_.insert(id).second) Show(id);
    }
  }

  void Show(std::uint32_t id) {
    CVptzDevice device;
    device.id = id;
    device.LoadDeviceInfo();
    Result event = session_.result;
    event.answers = Summary(device);
    session_.output.Event(event);
  }

  void TellProgress() {
    session_.output.Progress("searching, " + std::to_string(std::lround(Elapsed().count())) + " s, " +
                             std::to_string(found()) + " new cameras");
  }

  Session& session_;
  std::set<std::uint32_t> known_;
  std::size_t before_;
  const steady_clock::time_point begin_ = steady_clock::now();
};

ExitCode FailUnfinished(Session& session) {
  throw CommandError({"unfinished",
                      "the search has not ended within " + std::to_string(session.Integer("--limit")) +
                          " s; the service may go on with it",
                      ExitCode::kTimeout});
}

ExitCode SearchCameras(Session& session) {
  RequireDatabase();
  const Interrupt interrupt;
  Search search(session);
  const int status = search.Start();
  if (status != 0) return session.Fail(status);
  const bool finished = search.Follow(interrupt);
  search.End();
  if (!session.output.Complete()) return ExitCode::kOther;
  if (!finished && !interrupt.Arrived()) return FailUnfinished(session);
  session.result.answers = {
      {"finished", finished, ""},
      {"elapsed", RoundedToThousandths(search.Elapsed().count()), "s"},
      {"new_cameras", search.found(), ""},
      {"known_cameras", static_cast<std::uint32_t>(session.client().QueryDeviceCount()), ""}};
  return session.Finish(status);
}

std::string UserPassword(Session& session) { return session.Given("--user") ? ReadPassword(session) : ""; }

ExitCode Add(Session& session) {
  const std::string password = UserPassword(session);
  return session.Finish(session.client().AddDevice(session.Text("--mac"), session.Text("--name"),
                                                   session.Text("PROTOCOL"), session.Text("ADDRESS"),
                                                   session.Text("--user"), password, session.timeout));
}

ExitCode AddOnvif(Session& session) {
  const std::string password = UserPassword(session);
  return session.Finish(session.client().AddOnvifDeviceManually(session.Text("ADDRESS"), session.Text("--user"),
                                                                password, session.timeout));
}

ExitCode AddSerial(Session& session) {
  return session.Finish(session.client().AddRS232Device(session.Text("PORT"), session.Text("--name"),
                                                        session.Text("--line"), session.Signed("--baud-rate"),
                                                        session.Signed("--unit"), session.timeout));
}

ExitCode Remove(Session& session) {
  return session.Finish(session.client().RemoveDevice(session.camera().id, session.timeout));
}

std::vector<Argument> WithUser(std::vector<Argument> arguments) {
  arguments.push_back(Text("--user", "USER", "account at the camera; its password is asked for"));
  for (const Argument& argument : PasswordArguments("--user")) arguments.push_back(argument);
  return arguments;
}

Argument Name() { return Text("--name", "NAME", "its name"); }

Command SearchRow() {
  return {
      "",
      "search",
      "Has the service search for cameras, and shows new ones as they come.",
      {"SearchDevice", "SubscribeSearchDeviceFinishSignal", "SubscribeUpdateDevicesSignal",
       "UnSubscribeSearchDeviceFinishSignal", "UnSubscribeUpdateDevicesSignal", "QueryDeviceCount"},
      {Text("--protocols", "LIST", "protocols between commas, such as ONVIF,NDI; without it all of them"),
       Text("--scope", "SCOPE", "where to look, a text of the service's"),
       Integer("--limit", {1, 86400}, "seconds to wait for the end").Placeholder("S").Else(std::uint32_t{60})},
      {},
      SearchCameras};
}

Command AddSerialRow() {
  return {"device",
          "add-serial",
          "Adds a camera on a serial (RS-232) line.",
          {"AddRS232Device"},
          {Text("PORT", "", "name of the port, such as ttyS0"), Name(),
           Text("--line", "LINE", "how the port is wired, a text of the service's"), BaudRate(), Unit()},
          {},
          AddSerial};
}

}  // namespace

std::vector<Command> DiscoveryCommands() {
  return {
      SearchRow(),
      {"device",
       "add",
       "Adds a camera in the network.",
       {"AddDevice"},
       WithUser({Text("PROTOCOL", "", "how it is controlled, such as VISCA_OVER_IP"),
                 Text("ADDRESS", "", "where it is"), Name(), Text("--mac", "MAC", "its hardware address")}),
       {},
       Add},
      {"device",
       "add-onvif",
       "Adds an ONVIF camera that no search finds.",
       {"AddOnvifDeviceManually"},
       WithUser({Text("ADDRESS", "", "address of its service")}),
       {},
       AddOnvif},
      AddSerialRow(),
      {"device", "remove", "Has the service forget a camera.", {"RemoveDevice"}, {Camera()}, {}, Remove},
  };
}

}  // namespace vptzctl
