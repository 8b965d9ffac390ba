// What the contract tests of the bus share.
#ifndef VPTZ_TESTS_CONTRACT_BUS_FIXTURE_H
#define VPTZ_TESTS_CONTRACT_BUS_FIXTURE_H

#include <dorv_bus.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "contract/bus_peer.h"
#include "support/machine_delay.h"

namespace vptz_test {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// How long a call waits that names no time-out.
constexpr std::chrono::seconds kDefaultTimeout{2};

// What the contract allows beyond a time-out.
constexpr milliseconds kSlack{250};

// The bound for what happens at once: far below the time-outs beside it.
constexpr milliseconds kAtOnce{1000};

struct FreeClient {
  void operator()(bus_client* client) const { bus_client_free(client); }
};
using ClientPtr = std::unique_ptr<bus_client, FreeClient>;

// One call of a callback.
struct Delivery {
  bus_client* client;
  void* user_data;
  std::string name;
  std::string payload;
  std::int32_t length;
  bool null_payload;
  std::thread::id thread;
};

// Callbacks carry nothing of the test's own, so each of these has a function
// of its own and lives as long as the process.
class Receiver {
 public:
  explicit Receiver(bus_callback own) : callback(own) {}

  const bus_callback callback;

  // Runs inside the callback, after it has been recorded.
  void OnDelivery(std::function<void(const Delivery&)> action);

  void Deliver(const Delivery& delivery);
  std::vector<Delivery> All() const;
  std::size_t Count() const { return All().size(); }
  bool WaitFor(std::size_t count, milliseconds limit = std::chrono::seconds(10)) const;
  // Forgets deliveries and action.
  void Clear();

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable arrived_;
  std::function<void(const Delivery&)> action_;
  std::vector<Delivery> deliveries_;
};

constexpr int kReceivers = 3;
Receiver& TheReceiver(int index);

// Something that happens once and is waited for.
class Event {
 public:
  void Set();
  bool Wait(milliseconds limit = std::chrono::seconds(20));

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool set_ = false;
};

// A thread that is waited for also when a test ends early.
class Thread {
 public:
  template <class F>
  explicit Thread(F body) : thread_(std::move(body)) {}
  Thread(Thread&&) = default;
  ~Thread() { join(); }
  void join() {
    if (thread_.joinable()) thread_.join();
  }

 private:
  std::thread thread_;
};

struct CallResult {
  int code;
  std::string reply;
};

CallResult Call(bus_client* client, const std::string& service, const std::string& method,
                const std::string& request = "", int timeout = 10);

int CallAsync(bus_client* client, const std::string& service, const std::string& method,
              const std::string& request, bus_callback callback, int timeout = 10);

// Without what the machine itself took away meanwhile.
template <class F>
milliseconds Took(F action) {
  MachineDelay delay;
  const Clock::time_point begin = Clock::now();
  action();
  const Clock::time_point end = Clock::now();
  return std::chrono::duration_cast<milliseconds>(end - begin) - delay.Between(begin, end);
}

// Answers "echo" with the request's bytes and keeps every other request.
class KeepingService {
 public:
  KeepingService(BusPeer& peer, const std::string& name);

  bool Emit(const std::string& signal, const std::string& payload = "") {
    return service_->Emit(signal, payload);
  }

  // Waits until so many requests have been kept.
  bool WaitKept(std::size_t count, milliseconds limit = std::chrono::seconds(10));

  // Hands out the oldest kept request.
  std::unique_ptr<PeerRequest> Take();

 private:
  void Handle(std::unique_ptr<PeerRequest> request);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::unique_ptr<PeerRequest>> kept_;
  std::unique_ptr<PeerService> service_;
};

class BusContract : public testing::Test {
 protected:
  BusContract();
  ~BusContract() override;

  ClientPtr NewClient() const { return ClientPtr(bus_client_new("contract")); }
  ClientPtr Connected() const;
  std::unique_ptr<KeepingService> Serve(const std::string& name = "camera") {
    return std::make_unique<KeepingService>(*peer_, name);
  }

  std::unique_ptr<BusPeer> peer_;
};

}  // namespace vptz_test

#endif
