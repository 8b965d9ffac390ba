#include "session.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>

#include <vptz/model/vptzmodel.h>

#include "broker.h"
#include "camera.h"
#include "causes.h"
#include "command.h"
#include "parser.h"

namespace vptzctl {
namespace {

Result Describe(const Command& command, const Values& values) {
  Result result;
  result.command = command.Name();
  for (const Argument& argument : command.arguments) {
    if (argument.reported) {
      const Value& value = values.at(argument.name);
      result.arguments.push_back({FieldName(argument), value, argument.unit, true, value == argument.fallback});
    }
  }
  return result;
}

// The bus library's rule for a client that names no address.
std::string DefaultAddress() {
  const char* address = std::getenv("DORV_BUS_ADDRESS");
  return address && *address ? address : "unix:/run/dorv/bus.sock";
}

template <class Profile>
Profile& ProfileAt(std::vector<Profile>& profiles, std::uint32_t number, const std::string& kind) {
  if (number <= profiles.size()) return profiles[number - 1];
  throw CommandError({"unknown_profile",
                      "this camera has " + std::to_string(profiles.size()) + " " + kind + " profile" +
                          (profiles.size() == 1 ? "" : "s") +
                          ", counted from 1; 'vptzctl device show' lists them",
                      ExitCode::kDatabase});
}

}  // namespace

Session::Session(const Invocation& invocation, Output& destination, KeptClients* kept)
    : timeout(invocation.timeout),
      output(destination),
      result(Describe(*invocation.command, invocation.values)),
      invocation_(invocation),
      values_(invocation.values),
      kept_(kept) {}

void Session::Begin() {
  const Needs needs = invocation_.command->needs;
  if (needs == Needs::kNothing) return;
  OpenLibrary();
  if (needs == Needs::kDatabase) RequireDatabase();
  if (values_.count(kCamera) > 0) FindTheCamera();
  if (Has(kSlave)) FindTheSlave();
  if (needs != Needs::kBus) return;
  Connect();
  SetDeadline();
}

// A command may make several calls, and the library some more by itself.
// Connecting has a limit of its own.
void Session::SetDeadline() {
  // Of several commands each call has its time-out: the program must not end.
  if (timeout <= 0 || kept_ != nullptr) return;
  constexpr std::chrono::milliseconds kSlack(500);  // for a call that ends in time
  deadline_.emplace(std::chrono::seconds(timeout) + kSlack, [this, asked = result] {
    output.Fail(asked, Explained(-ETIMEDOUT), -ETIMEDOUT);
    std::_Exit(static_cast<int>(ExitCode::kTimeout));
  });
}

void Session::StopClock() {
  if (deadline_) deadline_->Pause();
}

void Session::StartClock() {
  if (deadline_) deadline_->Resume();
}

void Session::MeetDeadline() {
  if (deadline_) deadline_->Meet();
}

void Session::OpenLibrary() {
  if (kept_ == nullptr) {
    client_ = &own_.bus.emplace();
    return;
  }
  // Made again as long as there is no database: it may have come meanwhile.
  if (!kept_->lookup || !VptzModel::Instance().IsConnected()) kept_->lookup.emplace();
  const bool connects = invocation_.command->needs == Needs::kBus;
  if (connects && !kept_->bus) kept_->bus.emplace();
  client_ = connects ? &*kept_->bus : &*kept_->lookup;
}

VptzClient& Session::Lookup() { return kept_ != nullptr ? *kept_->lookup : *client_; }

void Session::FindTheCamera() {
  camera_ = FindCamera(Lookup(), Text(kCamera));
  camera_->SetVptzClient(client_);
  result.SetArgument("camera", camera_->id);
}

// Before the client is connected, or each device would be asked about.
void Session::FindTheSlave() {
  slave_ = FindCamera(Lookup(), Text(kSlave));
  slave_->SetVptzClient(client_);
  result.SetArgument("slave", slave_->id);
}

void Session::Connect() {
  KeptClients& clients = kept_ != nullptr ? *kept_ : own_;
  if (clients.connected) return;
  const std::string& bus = invocation_.bus;
  const auto begin = std::chrono::steady_clock::now();
  clients.connected = client_->Connect("vptzctl", bus.empty() ? nullptr : bus.c_str()) == 0;
  if (clients.connected) return;
  const std::string address = bus.empty() ? DefaultAddress() : bus;
  throw CommandError({"not_connected",
                      "cannot connect to the message bus at " + address + ": " +
                          WhyNotConnected(address, std::chrono::steady_clock::now() - begin),
                      ExitCode::kNoConnection});
}

double Session::Number(const std::string& name) const {
  const double* number = std::get_if<double>(&At(name));
  return number ? *number : kVptzNotCommanded;
}

std::string Session::Text(const std::string& name) const {
  const std::string* text = std::get_if<std::string>(&At(name));
  return text ? *text : "";
}

std::vector<std::string> Session::Texts(const std::string& name) const {
  const auto* texts = std::get_if<std::vector<std::string>>(&At(name));
  return texts ? *texts : std::vector<std::string>();
}

VptzPtzData& Session::Ptz() { return ProfileAt(camera_->ptz_list, Integer(kProfile), "PTZ"); }

VptzMediaData& Session::Media() { return ProfileAt(camera_->media_list, Integer(kProfile), "media"); }

unsigned int Session::PtzIndex() {
  Ptz();
  return Integer(kProfile);
}

unsigned int Session::MediaIndex() {
  Media();
  return Integer(kProfile);
}

void Session::ReloadCamera() {
  CVptzDevice fresh;
  fresh.id = camera_->id;
  fresh.LoadDeviceInfo();
  fresh.LoadPtzInfo();
  fresh.LoadMediaInfo();
  fresh.SetVptzClient(client_);
  camera_ = fresh;
}

ExitCode Session::Finish(int status) { return status == 0 ? Answer(status) : Fail(status); }

ExitCode Session::Answer(int status) {
  if (status < 0) return Fail(status);
  MeetDeadline();
  output.Show(result, status);
  return ExitCode::kDone;
}

Failure Session::Explained(int status) const {
  Failure failure = Explain(status);
  if (failure.exit_code == ExitCode::kTimeout) {
    failure.message += " of " + std::to_string(client_->GetVptzTimeout(timeout)) + " s";
  }
  return failure;
}

ExitCode Session::Fail(int status, const std::string& more) {
  MeetDeadline();
  Failure failure = Explained(status);
  const std::string cause = CauseOf(*this, status);
  if (!cause.empty()) failure.message = cause;
  failure.message += more;
  result.answers.clear();
  result.table.clear();
  result.lists.clear();
  output.Fail(result, failure, status);
  return failure.exit_code;
}

}  // namespace vptzctl
