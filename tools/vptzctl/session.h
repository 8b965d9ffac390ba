// What a verb's function works with: the client, the camera, what the command
// line holds, and the result that it fills.
#ifndef VPTZCTL_SESSION_H
#define VPTZCTL_SESSION_H

#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include <vptz/vptz_client.h>

#include "deadline.h"
#include "failures.h"
#include "output.h"
#include "result.h"
#include "value.h"

namespace vptzctl {

struct Invocation;

// The library's clients of a process that runs several commands: the connection
// is made once. Cameras are looked up by a client that never connects, for the
// service would be asked about each of them by one that did.
struct KeptClients {
  std::optional<VptzClient> lookup;
  std::optional<VptzClient> bus;
  // The bus library sees to it from then on. Another thread may ask.
  std::atomic<bool> connected{false};
};

class Session {
 public:
  // `result` begins with the command's name and its arguments. Without `kept`
  // the clients end with the session.
  Session(const Invocation& invocation, Output& output, KeptClients* kept = nullptr);

  // Opens the database, finds the camera and connects, as far as the command
  // needs it. Throws CommandError.
  void Begin();

  // Makes the client, and with it opens the library's database.
  void OpenLibrary();

  // The value of an argument: of a number that is not given kVptzNotCommanded,
  // of a text that is not given an empty one.
  double Number(const std::string& name) const;
  std::uint32_t Integer(const std::string& name) const { return std::get<std::uint32_t>(At(name)); }
  int Signed(const std::string& name) const { return static_cast<int>(Integer(name)); }
  bool Flag(const std::string& name) const { return std::get<bool>(At(name)); }
  std::string Text(const std::string& name) const;
  std::vector<std::string> Texts(const std::string& name) const;
  bool Given(const std::string& name) const { return At(name).index() != 0; }

  // The same for an argument that the command need not have.
  bool Has(const std::string& name) const { return values_.count(name) > 0 && Given(name); }

  // Whether a number is given; of the names that verbs share some are flags
  // elsewhere.
  bool HasNumber(const std::string& name) const {
    return values_.count(name) > 0 && std::holds_alternative<double>(At(name));
  }

  bool HasCamera() const { return camera_.has_value(); }

  const Invocation& invocation() const { return invocation_; }
  VptzClient& client() { return *client_; }

  // The camera that --slave names; none without it.
  const std::optional<CVptzDevice>& slave() const { return slave_; }

  // The camera that the command names. Its commands go through the client.
  CVptzDevice& camera() { return *camera_; }

  // The camera's profiles that --profile names, counted from 1. Throw
  // CommandError when it has fewer.
  VptzPtzData& Ptz();
  VptzMediaData& Media();
  unsigned int PtzIndex();
  unsigned int MediaIndex();

  // Reads the camera's record anew from the database, and from nowhere else.
  void ReloadCamera();

  // Ends a command whose result is done or not: shows it, or why it failed.
  ExitCode Finish(int status);

  // Ends a command whose positive result is the answer.
  ExitCode Answer(int status);

  // Tells why the command failed, and what else is to be known then.
  ExitCode Fail(int status, const std::string& more = "");

  // Says that the command lasts as long as it is to, whatever the time-out of its
  // calls.
  void TakesItsTime() { deadline_.reset(); }

  // No time of the command goes by while a person is asked.
  void StopClock();
  void StartClock();

  // The command ends by itself, not by its time-out.
  void MeetDeadline();

  const int timeout;  // seconds; 0 is the configured one
  Output& output;
  Result result;

 private:
  const Value& At(const std::string& name) const { return values_.at(name); }
  VptzClient& Lookup();  // not connected, or not yet
  void FindTheCamera();
  void FindTheSlave();
  void Connect();
  void SetDeadline();
  Failure Explained(int status) const;

  const Invocation& invocation_;
  const Values& values_;
  std::optional<Deadline> deadline_;
  KeptClients own_;
  KeptClients* const kept_;  // null: this command is the only one
  VptzClient* client_ = nullptr;
  std::optional<CVptzDevice> camera_;
  std::optional<CVptzDevice> slave_;
};

}  // namespace vptzctl

#endif
