#include "signals.h"

#include <cerrno>
#include <ctime>
#include <deque>
#include <mutex>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

#include "command.h"
#include "interrupt.h"
#include "payload.h"
#include "session.h"
#include "stored.h"

namespace vptzctl {
namespace {

class Queue {
 public:
  Queue() : readable_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE)) {
    if (readable_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }

  void Add(Signal signal) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      signals_.push_back(std::move(signal));
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(readable_, &one, sizeof one);
  }

  std::optional<Signal> Take() {
    std::uint64_t one = 0;
    if (read(readable_, &one, sizeof one) != sizeof one) return std::nullopt;
    const std::lock_guard<std::mutex> lock(mutex_);
    Signal first = std::move(signals_.front());
    signals_.pop_front();
    return first;
  }

  int readable() const { return readable_; }

 private:
  const int readable_;  // counts the signals
  std::mutex mutex_;
  std::deque<Signal> signals_;
};

// Never destroyed: a signal may come while the program ends.
Queue& TheQueue() {
  static Queue& queue = *new Queue;
  return queue;
}

// Local time with milliseconds and offset: "2026-03-01T14:05:09.137+01:00".
std::string TimeText(std::chrono::system_clock::time_point time) {
  using std::chrono::milliseconds;
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  const auto since = std::chrono::duration_cast<milliseconds>(time.time_since_epoch()).count() % 1000;
  std::tm local = {};
  localtime_r(&seconds, &local);
  char date[32], zone[8], text[64];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
  std::strftime(zone, sizeof zone, "%z", &local);
  std::snprintf(text, sizeof text, "%s.%03d%.3s:%s", date, static_cast<int>(since), zone, zone + 3);
  return text;
}

// What a signal tells, for programs and in words.
struct Meaning {
  Value words;
  Value found;
  Value refused;
  Value camera;
};

Meaning OfSearch(int outcome) {
  if (outcome >= 0) {
    return {std::to_string(outcome) + " found", static_cast<std::uint32_t>(outcome), Value(), Value()};
  }
  const Failure failure = Explain(outcome);
  return {failure.message + " (" + failure.name + ", " + std::to_string(outcome) + ")", Value(), failure.name,
          Value()};
}

Meaning OfChange(std::uint32_t id) {
  CVptzDevice device;
  device.id = id;
  device.LoadDeviceInfo();  // a device that has gone has no name any more
  return {CameraInWords(id, device.host_name), Value(), Value(), id};
}

Meaning MeaningOf(const Signal& signal) {
  if (signal.name == "finish/search_device") {
    const std::optional<int> outcome = SearchOutcome(signal.payload);
    return outcome ? OfSearch(*outcome) : Meaning();
  }
  if (signal.name != "update_devices") return {};
  const std::optional<std::uint32_t> device = ChangedDevice(signal.payload);
  return device ? OfChange(*device) : Meaning();
}

// People see the meaning in the place of the payload, where there is one.
void ShowSignal(Session& session, const Signal& signal) {
  const Meaning meaning = MeaningOf(signal);
  const bool is_clear = meaning.words.index() != 0;
  session.result.answers = {
      {"time", TimeText(signal.time), ""},
      {"signal", signal.name, ""},
      {"payload", signal.payload.empty() ? Value() : Value(signal.payload), "", true, is_clear},
      {"meaning", meaning.words, ""},
      {"found", meaning.found, "", true, true},
      {"refused", meaning.refused, "", true, true},
      {"camera", meaning.camera, "", true, true},
  };
  session.output.Event(session.result);
}

int Subscribe(Session& session, const std::string& name) {
  VptzClient& client = session.client();
  return name.empty() ? client.SubscribeAllSignal(OnSignal) : client.SubscribeSignal(name.c_str(), OnSignal);
}

ExitCode Monitor(Session& session) {
  session.TakesItsTime();
  const std::string name = session.Text("--signal");
  const Interrupt interrupt;
  const int subscribed = Subscribe(session, name);
  if (subscribed < 0) return session.Fail(subscribed);
  const std::uint32_t wanted = session.Given("--count") ? session.Integer("--count") : 0;
  constexpr std::chrono::hours kLong(24);
  for (std::uint32_t shown = 0; wanted == 0 || shown < wanted;) {
    const std::optional<Signal> signal = TakeSignal(interrupt, kLong);
    if (interrupt.Arrived()) break;
    if (!signal) continue;
    ShowSignal(session, *signal);
    if (!session.output.Complete()) return ExitCode::kOther;
    ++shown;
  }
  if (!name.empty()) session.client().UnsubscribeSignal(name.c_str());
  return ExitCode::kDone;
}

}  // namespace

void OnSignal(bus_client*, void*, const char* name, const void* payload, std::int32_t length) {
  const auto* bytes = static_cast<const char*>(payload);
  TheQueue().Add({std::chrono::system_clock::now(), name,
                  length > 0 ? std::string(bytes, static_cast<std::size_t>(length)) : std::string()});
}

void ForgetSignals() {
  while (TheQueue().Take()) continue;
}

std::optional<Signal> TakeSignal(const Interrupt& interrupt, std::chrono::duration<double> time) {
  if (std::optional<Signal> signal = TheQueue().Take()) return signal;
  interrupt.WaitFor(time, TheQueue().readable());
  return TheQueue().Take();
}

std::vector<Command> SignalCommands() {
  return {
      {"",
       "monitor",
       "Prints the service's signals as they come, until Ctrl-C.",
       {"SubscribeAllSignal", "SubscribeSignal", "UnsubscribeSignal"},
       {Text("--signal", "NAME", "only signals of this name")
            .Known({"update_devices", "finish/search_device"})
            .Unreported(),
        Integer("--count", {1, kLargestInteger}, "end after so many signals").Placeholder("N").Unreported()},
       {},
       Monitor}};
}

}  // namespace vptzctl
