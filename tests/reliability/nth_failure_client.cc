// Uses the library while one system call or allocation fails, then once more
// while none does.
//   reliability_nth_failure_client USE write|sync|open|allocation N ADDRESS
// The uses: configuration, schema, rows, client (without the bus), connect, calls.
// Exit codes: 0 the failure did no harm to the first use, 1 the first use told
// an error, 2 the second use failed, 3 there were not that many events. N of 0 lets
// nothing fail.
#include <dorv_bus.h>
#include <unistd.h>
#include <vptz/config.h>
#include <vptz/model/event.h>
#include <vptz/model/preset.h>
#include <vptz/model/setting.h>
#include <vptz/model/vptzmodel.h>
#include <vptz/vptz_client.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "installed_paths.h"
#include "reliability/nth_failure.h"
#include "support/wait_until.h"

namespace {

using vptz_test::FailureKind;
using vptz_test::NthFailure;

enum Exit { kHarmless = 0, kErrorTold = 1, kSecondFailed = 2, kTooFew = 3 };

const std::map<std::string, FailureKind> kKinds = {{"write", FailureKind::kWrite},
                                                   {"sync", FailureKind::kSync},
                                                   {"open", FailureKind::kOpen},
                                                   {"allocation", FailureKind::kAllocation}};

// A use of the library: what was called, and whether all of it said that it was
// done.
class Use {
 public:
  bool Done(const char* what, bool done) {
    if (!done && failed_ == nullptr) failed_ = what;
    return done;
  }
  const char* failed() const { return failed_; }

 private:
  const char* failed_ = nullptr;
};

// ---- the database and the configuration ----------------------------------------

template <class Row, class... Arguments>
std::unique_ptr<Row> One(int (*query)(Row**, Arguments...), Arguments... arguments) {
  Row* row = nullptr;
  query(&row, arguments...);
  return std::unique_ptr<Row>(row);
}

// Only the constructor throws.
void UseConfiguration(Use& use, const std::string&) {
  std::optional<Config> config;
  try {
    config.emplace(vptz::ConfigFile());
  } catch (const std::bad_alloc&) {
    use.Done("Config", false);
    return;
  }
  if (!use.Done("Load", config->Load() == 0)) return;
  int timeout = 0;
  use.Done("GetValue", config->GetValue("MQTT", "timeout", 7, timeout) == 0 && timeout == 2);
}

// Whether the event was added; aborts when it was not and has an id.
bool AddKeepsTheId(Event& event) {
  struct Check {
    ~Check() {
      if (!added && event.id() != 0) std::abort();
    }
    const Event& event;
    bool added;
  } check{event, false};
  check.added = Event::Add(&event) > 0;
  return check.added;
}

void UseRows(Use& use, const std::string& name) {
  Event event(name, "first");
  if (!use.Done("Add", AddKeepsTheId(event))) return;
  event.set_message("second");
  use.Done("Update", Event::Update(event) == 0);
  const auto stored = One<Event, unsigned>(&Event::QueryById, event.id());
  use.Done("QueryById", stored != nullptr && stored->message() == "second");
  Preset presets[3];
  for (Preset& preset : presets) preset.set_preset_id(event.id());
  use.Done("AddAll", Preset::AddAll(presets, 3) == 0);
  Setting setting(name, "value");
  use.Done("Add a setting", VptzModel::Add(&setting) >= 0);
  std::string value;
  use.Done("QueryValue", Setting::QueryValue(name, &value) == 0 && value == "value");
  use.Done("Remove", Event::Remove(event.id()) == 0);
}

// Makes the file and its schema.
void UseSchema(Use& use, const std::string&) {
  use.Done("Initialize", VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", "") == 0);
}

// Of the model's operations std::bad_alloc comes out, as its header says. Out of
// everything else nothing does, and nobody catches it.
template <void (*kBody)(Use&, const std::string&)>
void CatchingBadAlloc(Use& use, const std::string& name) {
  try {
    kBody(use, name);
  } catch (const std::bad_alloc&) {
    use.Done("std::bad_alloc", false);
  }
}

// ---- the bus -------------------------------------------------------------------

// Nobody catches here: VptzClient throws nothing.
class BusUse {
 public:
  explicit BusUse(std::string address) : address_(std::move(address)) {}

  void Connect(Use& use, VptzClient& client) {
    use.Done("Connect", client.Connect("nth", address_.c_str()) == 0);
  }

  void Call(Use& use, VptzClient& client) {
    answers_ = 0;
    use.Done("GetStatus", client.GetStatus() == 0);
    use.Done("ContinuousMove", client.ContinuousMove(1, 0.5, 0, 0) == 0);
    use.Done("PtzStop", client.PtzStop(1, true, true, true) == 0);
    use.Done("AddDevice", client.AddDevice("mac", "name", "ONVIF", "address", "user", "password") == 0);
    Subscribe(use, client);
    // A call that began ends with exactly one result.
    if (use.Done("CallAsync", client.CallAsync("echo", "x", 1, &Count, 1) == 0)) {
      WaitForAnswer();
      use.Done("the answer", good_answer_);
    }
    use.Done("a refusal", Refused(client) == -EPERM);
    use.Done("UnsubscribeSignal", client.UnsubscribeSignal("moved") == 0);
    // Looked up in the database first, which knows none.
    use.Done("SetBrightness", client.SetBrightness(1, 50) == -1);
    use.Done("FocusFar", client.FocusFar(1, "") == -1);
  }

  void ConnectAndCall(Use& use, VptzClient& client) {
    Connect(use, client);
    if (use.failed() == nullptr) Call(use, client);
  }

 private:
  // Signals come when it was told so, also when it was told at the second try.
  static void Subscribe(Use& use, VptzClient& client) {
    const bool first = client.SubscribeSignal("moved", &CountSignal) == 0;
    use.Done("SubscribeSignal", first);
    if (!first && client.SubscribeSignal("moved", &CountSignal) != 0) return;
    signals_ = 0;
    const auto moved = [&] {
      char reply[16];
      int length = sizeof reply;
      client.CallSync("move", "x", 1, reply, &length, 1);
      return signals_ > 0;
    };
    if (!vptz_test::WaitUntil(moved)) {
      std::cerr << "a subscription brings no signals\n";
      std::abort();
    }
  }
  static void CountSignal(bus_client*, void*, const char*, const void*, std::int32_t) { ++signals_; }
  static void Count(bus_client*, void*, const char*, const void*, std::int32_t length) {
    good_answer_ = length >= 0;
    ++answers_;
  }
  // Of what the service refuses; nothing may make a success of it.
  static int Refused(VptzClient& client) {
    char reply[16];
    int length = sizeof reply;
    const int code = client.CallSync("refused", "x", 1, reply, &length, 1);
    if (code >= 0) {
      std::cerr << "a refused call was told to be done\n";
      std::abort();
    }
    return code;
  }
  static void WaitForAnswer() {
    if (!vptz_test::WaitUntil([] { return answers_ > 0; })) {
      std::cerr << "an asynchronous call never ended\n";
      std::abort();
    }
  }

  static inline std::atomic<int> answers_{0};
  static inline std::atomic<int> signals_{0};
  static inline std::atomic<bool> good_answer_{false};
  const std::string address_;
};

// ---- both ----------------------------------------------------------------------

const char* Told(const Use& use) { return use.failed() == nullptr ? "done" : use.failed(); }

int Result(const Use& first, bool happened, int n, const Use& second) {
  std::cout << "first: " << Told(first) << "\nsecond: " << Told(second) << std::endl;
  if (second.failed() != nullptr) return kSecondFailed;
  if (first.failed() != nullptr) return kErrorTold;
  return happened || n == 0 ? kHarmless : kTooFew;
}

template <class Body>
bool WhileOneFails(FailureKind kind, int n, Body body) {
  const NthFailure failure(kind, n);
  body();
  return n > 0 && failure.Happened();
}

int RunLocal(void (*body)(Use&, const std::string&), FailureKind kind, int n) {
  const std::string name = std::to_string(n) + " of " + std::to_string(getpid());
  Use first;
  Use second;
  const std::string first_name = "first " + name;
  const bool happened = WhileOneFails(kind, n, [&] { body(first, first_name); });
  body(second, "second " + name);
  return Result(first, happened, n, second);
}

// With the database open.
int RunRows(FailureKind kind, int n) {
  Use open;
  UseSchema(open, "");
  const int result = RunLocal(&CatchingBadAlloc<UseRows>, kind, n);
  VptzModel::Instance().Release();
  return result;
}

// What a client does in the database, from its making to its end.
void UseClient(Use& use, const std::string&) {
  VptzClient client;
  use.Done("a database", VptzModel::Instance().IsConnected());
  use.Done("LoadDevices", client.LoadDevices() == 0);
  use.Done("QueryDeviceAll", client.QueryDeviceAll() != nullptr);
  use.Done("QueryDeviceByProtocol", client.QueryDeviceByProtocol("ONVIF").empty());
  use.Done("GotoPresetById", client.GotoPresetById(1, 1, 0, 0, 0) == -1);
  use.Done("QueryDeviceCount", client.QueryDeviceCount() == 0);
}

using BusStep = void (BusUse::*)(Use&, VptzClient&);

// The client that met the failure is as good as new; so is a new one.
int RunBus(const std::string& address, bool connected, BusStep step, FailureKind kind, int n) {
  BusUse bus(address);
  Use first;
  Use second;
  std::optional<VptzClient> client;
  client.emplace();
  if (connected) bus.Connect(second, *client);
  const bool happened = WhileOneFails(kind, n, [&] { (bus.*step)(first, *client); });
  bus.ConnectAndCall(second, *client);
  client.reset();
  client.emplace();
  bus.ConnectAndCall(second, *client);
  return Result(first, happened, n, second);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 64;
  const std::string use = argv[1];
  const FailureKind kind = kKinds.at(argv[2]);
  const int n = std::atoi(argv[3]);
  vptz::ConfigFile();  // the files' names stay as they are; made here, outside the counting
  vptz::DatabaseFile();
  alarm(20);
  if (use == "configuration") return RunLocal(&UseConfiguration, kind, n);
  if (use == "schema") return RunLocal(&CatchingBadAlloc<UseSchema>, kind, n);
  if (use == "rows") return RunRows(kind, n);
  if (use == "client") return RunLocal(&UseClient, kind, n);
  const bool calls = use == "calls";
  return RunBus(argv[4], calls, calls ? &BusUse::Call : &BusUse::Connect, kind, n);
}
