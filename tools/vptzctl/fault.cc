// The faults that the reference service's simulated cameras suffer on demand.
#include <algorithm>
#include <vector>

#include <vptz/model/vptzmodel.h>

#include <nlohmann/json.hpp>

#include "command.h"
#include "payload.h"
#include "people.h"
#include "session.h"
#include "stored.h"

namespace vptzctl {
namespace {

using Json = nlohmann::ordered_json;

// A method of the reference service that the library has no operation for: its
// request is JSON, and its reply carries JSON, or the reason, as a text.
constexpr char kMethod[] = "simulate_faults";
constexpr std::uint32_t kStatusField = 1;
constexpr std::uint32_t kTextField = 2;
constexpr int kLargestReply = 65536;

struct Answer {
  int status = 0;
  std::string text;
};

Answer Ask(Session& session, const std::string& request) {
  std::vector<char> reply(kLargestReply);
  int length = kLargestReply;
  VptzClient& client = session.client();
  const int result = client.CallSync(kMethod, request.data(), static_cast<int>(request.size()), reply.data(),
                                     &length, client.GetVptzTimeout(session.timeout));
  if (result < 0) return {result, ""};
  const std::string_view message(reply.data(), static_cast<std::size_t>(length));
  return {static_cast<int>(static_cast<std::uint32_t>(NumberIn(message, kStatusField).value_or(0))),
          TextIn(message, kTextField).value_or("")};
}

Value TextOf(const Json& fault, const char* key) {
  const auto member = fault.find(key);
  if (member == fault.end()) return {};
  return member->is_string() ? member->get<std::string>() : member->dump();
}

Value NumberOf(const Json& fault, const char* key) {
  const auto member = fault.find(key);
  if (member == fault.end() || !member->is_number_unsigned()) return {};
  return member->get<std::uint32_t>();
}

// The list in an answer; empty when it is none.
Json FaultsIn(const Answer& answer) {
  const Json document = Json::parse(answer.text, nullptr, false);
  const bool has_list = document.is_object() && document.contains("faults") && document["faults"].is_array();
  return has_list ? document["faults"] : Json::array();
}

ExitCode Finish(Session& session, const Answer& answer) {
  if (answer.status != 0) return session.Fail(answer.status, answer.text.empty() ? "" : ": " + answer.text);
  List faults = {"faults", {}};
  for (const Json& fault : FaultsIn(answer)) {
    faults.rows.push_back({{"kind", TextOf(fault, "kind"), ""},
                           {"camera", TextOf(fault, "camera"), ""},
                           {"method", TextOf(fault, "method"), ""},
                           {"milliseconds", NumberOf(fault, "milliseconds"), "ms"}});
  }
  session.result.lists = {faults};
  return session.Finish(0);
}

ExitCode Send(Session& session, const Json& faults) {
  return Finish(session,
                Ask(session, Json({{"faults", faults}}).dump(-1, ' ', false, Json::error_handler_t::replace)));
}

Json Described(const Session& session) {
  Json fault = {{"kind", session.Text("KIND")}};
  const std::string camera = session.Text("--camera");
  const bool is_number = camera.size() < 10 && camera.find_first_not_of("0123456789") == std::string::npos;
  if (!camera.empty()) fault["camera"] = is_number ? Json(std::stoul(camera)) : Json(camera);
  if (session.Given("--method")) fault["method"] = session.Text("--method");
  if (session.Given("--milliseconds")) fault["milliseconds"] = session.Integer("--milliseconds");
  return fault;
}

ExitCode FaultList(Session& session) { return Finish(session, Ask(session, "")); }

// The service takes any name: the camera may come later.
void WarnOfUnknownName(const Session& session, const Json& fault) {
  const auto name = fault.find("camera");
  if (name == fault.end() || !name->is_string() || !VptzModel::Instance().IsConnected()) return;
  const std::vector<StoredCamera> cameras = StoredCameras();
  const bool known = std::any_of(cameras.begin(), cameras.end(),
                                 [&](const StoredCamera& camera) { return camera.name == *name; });
  if (known) return;
  session.output.Note("no camera in the database has the name " + Quoted(*name) +
                      "; the fault concerns none until one does");
}

// Beside the faults that are in force.
ExitCode FaultAdd(Session& session) {
  const Answer now = Ask(session, "");
  if (now.status != 0) return Finish(session, now);
  Json faults = FaultsIn(now);
  faults.push_back(Described(session));
  const ExitCode exit_code = Send(session, faults);
  if (exit_code == ExitCode::kDone) WarnOfUnknownName(session, faults.back());
  return exit_code;
}

ExitCode FaultClear(Session& session) { return Send(session, Json::array()); }

Command AddRow() {
  return {
      "fault",
      "add",
      "Has simulated cameras suffer one more fault.",
      {"CallSync"},
      {Choice(
           "KIND",
           {"offline", "refuse_login", "forget_presets", "lose_power", "delay", "drop", "oversize", "garble"},
           "what happens"),
       Text("--camera", "CAMERA",
            "which camera: its number in the service's fleet, from 1, or its name; "
            "without it every one"),
       Text("--method", "METHOD", "calls of which method, such as ptz_stop; without it every one"),
       Integer("--milliseconds", {0, kLargestInteger}, "how long, where a fault takes time").Placeholder("N")},
      {},
      FaultAdd};
}

}  // namespace

std::vector<Command> FaultCommands() {
  return {
      {"fault", "list", "Lists the faults that are in force.", {"CallSync"}, {}, {}, FaultList},
      AddRow(),
      {"fault", "clear", "Ends all faults.", {"CallSync"}, {}, {}, FaultClear},
  };
}

}  // namespace vptzctl
