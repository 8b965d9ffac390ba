// Sends mixed commands from four clients at once to a real service over a real
// broker, and tells what that does to memory, descriptors and the database.
// usage: VPTZ_TEST_FOLDER=FOLDER commands_soak COMMANDS
// In the empty folder it makes configuration and database.
#include <dirent.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <vptz/model/vptzmodel.h>
#include <vptz/vptz_client.h>

#include "model/raw_database.h"
#include "support/broker.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace {

constexpr int kClients = 4;
constexpr int kCameras = 4;

struct Usage {
  long resident_kib = 0;
  int descriptors = 0;
};

Usage UsageOf(int pid) {
  const std::string folder = "/proc/" + std::to_string(pid);
  Usage usage;
  long total = 0;
  std::ifstream(folder + "/statm") >> total >> usage.resident_kib;
  usage.resident_kib *= sysconf(_SC_PAGESIZE) / 1024;
  if (DIR* const descriptors = opendir((folder + "/fd").c_str())) {
    while (readdir(descriptors) != nullptr) ++usage.descriptors;
    closedir(descriptors);
  }
  return usage;
}

// The results that came, and how often.
class Results {
 public:
  void Add(int result) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++counts_[result];
  }
  void Print() const {
    for (const auto& [result, count] : counts_) std::printf("  result %d: %ld times\n", result, count);
  }
  // Bus failures and local ones; refusals of the service are answers.
  long failures() const {
    long sum = 0;
    for (const auto& [result, count] : counts_) sum += result < 0 && result > -1000 ? count : 0;
    return sum;
  }

 private:
  std::mutex mutex_;
  std::map<int, long> counts_;
};

using Step = std::function<int(VptzClient&, unsigned int camera, int round)>;

std::string Token(unsigned int camera, int round) {
  return "soak-" + std::to_string(camera) + "-" + std::to_string(round % 10);
}

const std::vector<Step>& Steps() {
  static const std::vector<Step> steps = {
      [](VptzClient& c, unsigned int id, int round) {
        return c.AbsolutePanTiltMove(id, round % 160 - 80, round % 50 - 20, 90.0, 70.0);
      },
      [](VptzClient& c, unsigned int id, int) {
        VptzPtzData profile;
        return c.QueryPtzProfiles(id, "ptz0", &profile);
      },
      [](VptzClient& c, unsigned int id, int) { return c.ContinuousMove(id, 10.0, -5.0, 0.5); },
      [](VptzClient& c, unsigned int id, int) { return c.PtzStop(id, true, true, true); },
      [](VptzClient& c, unsigned int id, int round) {
        return c.SetImagingSettings(2 * id - 1, round % 100, 50.0, 50.0, 0.0, 1.0, "DEFAULT");
      },
      [](VptzClient& c, unsigned int id, int) {
        VptzMediaData media;
        return c.QueryMediaProfiles(id, "main", &media);
      },
      [](VptzClient& c, unsigned int id, int round) { return c.SetPreset(id, "soak", Token(id, round)); },
      [](VptzClient& c, unsigned int id, int round) {
        return c.GotoPreset(id, Token(id, round), 80.0, 60.0, 5.0);
      },
      [](VptzClient& c, unsigned int id, int round) { return c.RemovePreset(id, Token(id, round)); },
      [](VptzClient& c, unsigned int id, int) {
        std::string uri = "rtsp://192.0.2.1/main";
        return c.QueryNATuri(id, NAT_MEDIA, uri);
      },
      [](VptzClient& c, unsigned int id, int) { return c.Login(id, "admin", "admin"); },
      [](VptzClient& c, unsigned int, int) { return c.GetDevicesPowerStatus(); },
  };
  return steps;
}

void Drive(VptzClient& client, unsigned int camera, int commands, std::atomic<long>& sent, Results& results) {
  for (int i = 0; i < commands; ++i) {
    const auto& steps = Steps();
    const std::size_t count = steps.size();
    results.Add(steps[static_cast<std::size_t>(i) % count](client, camera, i / static_cast<int>(count)));
    ++sent;
  }
}

void Print(const char* when, int service) {
  const Usage own = UsageOf(getpid());
  const Usage other = UsageOf(service);
  std::printf("%s: clients %ld KiB, %d descriptors; vptzd %ld KiB, %d descriptors\n", when, own.resident_kib,
              own.descriptors, other.resident_kib, other.descriptors);
  std::fflush(stdout);
}

bool IsConsistent(const std::string& file) {
  vptz_test::RawDatabase database(file);
  database.Execute("PRAGMA busy_timeout = 5000");
  const std::string integrity = database.Value("PRAGMA integrity_check");
  const auto orphans = database.Rows("PRAGMA foreign_key_check");
  std::printf("integrity_check %s, %zu broken references, %s presets\n", integrity.c_str(), orphans.size(),
              database.Value("SELECT count(*) FROM preset").c_str());
  return integrity == "'ok'" && orphans.empty();
}

int Soak(const std::string& folder, int commands) {
  std::ofstream(folder + "/vptz.conf") << "[MQTT]\ntimeout=10\n\n[VPTZ]\nndi_preset_shift=0\n";
  const std::string file = folder + "/vptz.db";
  const vptz_test::Broker broker;
  vptz_test::Process service(
      {VPTZD, "--bus", broker.address(), "--database", file, "--cameras", std::to_string(kCameras)});
  if (!vptz_test::WaitUntil([&] { return service.Output().find("serving") != std::string::npos; })) return 1;

  std::vector<std::unique_ptr<VptzClient>> clients;
  for (int i = 0; i < kClients; ++i) {
    clients.push_back(std::make_unique<VptzClient>());
    if (clients.back()->Connect("soak", broker.address().c_str()) != 0) return 1;
  }
  Results results;
  std::atomic<long> sent{0};
  const auto begin = std::chrono::steady_clock::now();
  std::vector<std::thread> threads;
  for (int i = 0; i < kClients; ++i) {
    threads.emplace_back([&, i] {
      Drive(*clients[static_cast<std::size_t>(i)], static_cast<unsigned int>(i + 1), commands / kClients, sent,
            results);
    });
  }
  while (sent < commands / 10) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  Print("after the first tenth", service.pid());
  for (std::thread& thread : threads) thread.join();
  Print("at the end", service.pid());
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  std::printf("%ld commands in %.1f s, %.0f a second, %ld failed\n", sent.load(), elapsed.count(),
              static_cast<double>(sent) / elapsed.count(), results.failures());
  results.Print();
  clients.clear();
  service.Signal(SIGTERM);
  const bool ended = service.Wait() == 0;
  return IsConsistent(file) && ended && results.failures() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const int commands = argc == 2 ? std::atoi(argv[1]) : 0;
  const char* const folder = std::getenv("VPTZ_TEST_FOLDER");
  if (commands < kClients || folder == nullptr) {
    std::fprintf(stderr, "usage: VPTZ_TEST_FOLDER=FOLDER commands_soak COMMANDS\n");
    return 2;
  }
  return Soak(folder, commands);
}
