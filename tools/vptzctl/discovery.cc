#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

#include <vptz/utils.h>

#include "camera.h"
#include "command.h"
#include "describe.h"
#include "interrupt.h"
#include "password.h"
#include "payload.h"
#include "protocols.h"
#include "serial_line.h"
#include "session.h"
#include "signals.h"
#include "stored.h"

namespace vptzctl {
namespace {

using Seconds = std::chrono::duration<double>;
using std::chrono::steady_clock;

constexpr char kFinished[] = "finish/search_device";

// What a search without a list of protocols looks for.
constexpr char kUsualProtocols[] = "ONVIF,QX310,NDI";

std::set<std::uint32_t> StoredIds() {
  std::set<std::uint32_t> ids;
  for (const StoredCamera& camera : StoredCameras()) ids.insert(camera.id);
  return ids;
}

// The protocols of a list between commas, spelled as the service does.
std::string SpelledList(const std::string& list) {
  std::vector<std::string> names;
  for (std::string name : StrSplit(list, ",")) {
    name.erase(0, name.find_first_not_of(' '));
    name.erase(name.find_last_not_of(' ') + 1);
    if (!name.empty()) names.push_back(RequireProtocol(name));
  }
  if (names.empty()) throw CommandError({"unknown_protocol", NoSuchProtocol(list), ExitCode::kDatabase});
  return Joined(names, ",");
}

// One search: tells cameras that the database did not have before.
class Search {
 public:
  Search(Session& session, std::string protocols)
      : session_(session), protocols_(std::move(protocols)), known_(StoredIds()), before_(known_.size()) {}

  int Start() {
    VptzClient& client = session_.client();
    const int finish = client.SubscribeSearchDeviceFinishSignal(OnSignal);
    if (finish < 0) return finish;
    const int update = client.SubscribeUpdateDevicesSignal(OnSignal);
    if (update < 0) return update;
    return client.SearchDevice(session_.Text("--scope"), protocols_, session_.timeout);
  }

  // Whether the search has ended; false after an interrupt or the time limit.
  bool Follow(const Interrupt& interrupt) {
    const Seconds limit(session_.Integer("--limit"));
    while (!interrupt.Arrived() && Elapsed() < limit && session_.output.Complete()) {
      TellProgress();
      const auto signal = TakeSignal(interrupt, std::min(Seconds(1), limit - Elapsed()));
      if (signal) ShowNew();
      if (!signal || signal->name != kFinished) continue;
      outcome_ = SearchOutcome(signal->payload);
      return true;
    }
    return false;
  }

  void End() {
    session_.client().UnSubscribeSearchDeviceFinishSignal();
    session_.client().UnSubscribeUpdateDevicesSignal();
  }

  Seconds Elapsed() const { return steady_clock::now() - begin_; }
  std::uint32_t found() const { return static_cast<std::uint32_t>(known_.size() - before_); }

  // What the service says about its end: cameras found, or a refusal.
  std::optional<int> outcome() const { return outcome_; }

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
  const std::string protocols_;
  std::optional<int> outcome_;
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
  session.TakesItsTime();
  const std::string protocols = session.Given("--protocols") ? SpelledList(session.Text("--protocols")) : "";
  if (!protocols.empty()) session.result.SetArgument("protocols", protocols);
  const Interrupt interrupt;
  Search search(session, protocols);
  const int status = search.Start();
  if (status != 0) return session.Fail(status);
  const bool finished = search.Follow(interrupt);
  search.End();
  if (!session.output.Complete()) return ExitCode::kOther;
  if (!finished && !interrupt.Arrived()) return FailUnfinished(session);
  if (search.outcome().value_or(0) < 0) return session.Fail(*search.outcome());
  session.result.answers = {
      {"searched", std::string(protocols.empty() ? kUsualProtocols : protocols), ""},
      {"finished", finished, ""},
      {"elapsed", RoundedToThousandths(search.Elapsed().count()), "s"},
      {"new_cameras", search.found(), ""},
      {"known_cameras", static_cast<std::uint32_t>(session.client().QueryDeviceCount()), ""},
      {"found", search.outcome() ? Value(static_cast<std::uint32_t>(*search.outcome())) : Value(), ""}};
  return session.Finish(status);
}

std::string UserPassword(Session& session) { return session.Given("--user") ? ReadPassword(session) : ""; }

ExitCode Add(Session& session) {
  const std::string password = UserPassword(session);
  const std::string protocol = ProtocolOrText(session.Text("PROTOCOL"));
  session.result.SetArgument("protocol", protocol);
  return session.Finish(session.client().AddDevice(session.Text("--mac"), session.Text("--name"), protocol,
                                                   session.Text("ADDRESS"), session.Text("--user"), password,
                                                   session.timeout));
}

ExitCode AddOnvif(Session& session) {
  const std::string password = UserPassword(session);
  return session.Finish(session.client().AddOnvifDeviceManually(session.Text("ADDRESS"), session.Text("--user"),
                                                                password, session.timeout));
}

ExitCode AddSerial(Session& session) {
  const std::string port = StoredPort(session.Text("PORT"));
  session.result.SetArgument("port", port);
  return session.Finish(session.client().AddRS232Device(port, session.Text("--name"), session.Text("--line"),
                                                        session.Signed("--baud-rate"), session.Signed("--unit"),
                                                        session.timeout));
}

ExitCode Remove(Session& session) {
  return session.Finish(session.client().RemoveDevice(session.camera().id, session.timeout));
}

std::vector<Argument> WithUser(std::vector<Argument> arguments) {
  arguments.push_back(Text("--user", "USER", "account at the camera; the tool asks for its password"));
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
      {Text("--protocols", "LIST",
            "protocols, separated by commas, such as ONVIF,NDIHX; without it ONVIF,QX310,NDI"),
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
       WithUser({Text("PROTOCOL", "", "how it is controlled").Known(KnownProtocols()),
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
