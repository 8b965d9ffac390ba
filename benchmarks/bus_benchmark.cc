// One call of 100 bytes each way, through the bus library and through the same
// exchange written by hand, in one run on one processor.
#include <benchmark/benchmark.h>
#include <dorv_bus.h>
#include <mosquitto.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <vptz/vptz_client.h>

#include "allocations.h"
#include "hand_written.h"
#include "support/broker.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace {

constexpr int kBodySize = 100;
constexpr int kRepetitions = 9;
constexpr int kCallsEach = 3000;

// Broker and services inherit it: left to the scheduler, figures move by a
// factor of two from run to run.
void PinToOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  if (sched_setaffinity(0, sizeof one, &one) != 0) std::perror("sched_setaffinity");
}

void Check(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string(what) + " failed with " + std::to_string(result));
}

// Times each call on its own; the median says more than the mean.
template <class Call>
void Measure(benchmark::State& state, Call call) {
  for (int i = 0; i < 50; ++i) call();
  std::vector<double> microseconds;
  microseconds.reserve(kCallsEach);
  const std::size_t allocations_before = Allocations();
  for (auto _ : state) {
    const auto began = std::chrono::steady_clock::now();
    call();
    const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - began;
    microseconds.push_back(took.count());
  }
  const auto calls = static_cast<double>(microseconds.size());
  state.counters["allocations"] = static_cast<double>(Allocations() - allocations_before) / calls;
  state.counters["calls_per_s"] = benchmark::Counter(calls, benchmark::Counter::kIsRate);
  std::sort(microseconds.begin(), microseconds.end());
  state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
  state.counters["p50_us"] = microseconds[microseconds.size() / 2];
}

class World {
 public:
  World()
      : bus_service_({ECHO_SERVICE, "bus", broker_.address()}),
        hand_service_({ECHO_SERVICE, "hand", broker_.socket_path()}) {
    for (const vptz_test::Process* service : {&bus_service_, &hand_service_}) {
      if (!vptz_test::WaitUntil([&] { return service->Output().find("ready") != std::string::npos; })) {
        throw std::runtime_error("a service did not start: " + service->Errors());
      }
    }
  }
  const vptz_test::Broker& broker() const { return broker_; }

 private:
  vptz_test::Broker broker_;
  vptz_test::Process bus_service_;
  vptz_test::Process hand_service_;
};

void HandWrittenCall(benchmark::State& state, const World& world, int qos) {
  HandWritten client(world.broker().socket_path(), "hand-client-" + std::to_string(qos), "hand/reply", qos);
  const std::string body(kBodySize, 'x');
  Measure(state, [&] { client.Call(body.data(), kBodySize); });
}

void BusCall(benchmark::State& state, const World& world) {
  bus_client* client = bus_client_new("benchmark");
  Check(bus_connect(client, world.broker().address().c_str()), "bus_connect");
  const std::string body(kBodySize, 'x');
  char reply[512];
  Measure(state, [&] {
    int length = sizeof reply;
    Check(bus_method_call_sync(client, "vptz", "echo", body.data(), kBodySize, reply, &length, 2), "the call");
  });
  bus_client_free(client);
}

void ClientPowerStatus(benchmark::State& state, const World& world) {
  VptzClient client;
  Check(client.Connect("benchmark", world.broker().address().c_str()), "Connect");
  Measure(state, [&] { Check(client.GetDevicesPowerStatus(), "GetDevicesPowerStatus"); });
}

// Prints as usual and remembers the medians.
class Reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") medians_[run.run_name.function_name] = run.counters.at("p50_us");
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios() const {
    const double bus = medians_.at("bus");
    std::printf("\nmedian call: %.1f us through the bus library\n", bus);
    for (const char* name : {"by_hand_qos1", "by_hand_qos0"}) {
      std::printf("  %.2f times the same by hand, request at QoS %c (%.1f us)\n", bus / medians_.at(name),
                  name[11], medians_.at(name));
    }
  }

 private:
  std::map<std::string, double> medians_;
};

template <class Body>
void Register(const char* name, Body body) {
  benchmark::RegisterBenchmark(name, body)->Iterations(kCallsEach)->Repetitions(kRepetitions)->UseRealTime();
}

}  // namespace

int main(int count, char** arguments) {
  PinToOneProcessor();
  std::string interleave = "--benchmark_enable_random_interleaving=true";
  std::string aggregates = "--benchmark_report_aggregates_only=true";
  std::string plain = "--benchmark_color=false";
  std::vector<char*> all(arguments, arguments + count);
  all.push_back(interleave.data());
  all.push_back(aggregates.data());
  all.push_back(plain.data());
  int total = static_cast<int>(all.size());
  benchmark::Initialize(&total, all.data());

  mosquitto_lib_init();
  bus_init();
  const World world;
  Register("by_hand_qos1", [&](benchmark::State& state) { HandWrittenCall(state, world, 1); });
  Register("by_hand_qos0", [&](benchmark::State& state) { HandWrittenCall(state, world, 0); });
  Register("bus", [&](benchmark::State& state) { BusCall(state, world); });
  Register("client", [&](benchmark::State& state) { ClientPowerStatus(state, world); });
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  bus_cleanup();
  return 0;
}
