#ifndef VPTZ_TESTS_RELIABILITY_HOSTILE_SERVICE_H
#define VPTZ_TESTS_RELIABILITY_HOSTILE_SERVICE_H

#include <mosquitto.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <random>
#include <string>
#include <utility>

namespace vptz_test {

// Serves the name "vptz" without the bus library. Before and behind the answer
// to each request it sends replies that belong to no call that waits: changed,
// repeated and invented ones, whose bytes are kWrong. The right answer is the
// request's bytes; requests of the method "silent" get none.
class HostileService {
 public:
  static constexpr char kWrong[] = "wrong";

  explicit HostileService(const std::string& socket_path);
  ~HostileService();
  HostileService(const HostileService&) = delete;
  HostileService& operator=(const HostileService&) = delete;

  int wrong_replies() const { return wrong_replies_; }

 private:
  struct Address {
    std::string topic;
    std::string correlation;
  };

  static void OnConnect(mosquitto*, void* self, int reason, int flags, const mosquitto_property*);
  static void OnSubscribe(mosquitto*, void* self, int id, int count, const int* granted,
                          const mosquitto_property*);
  static void OnMessage(mosquitto*, void* self, const mosquitto_message*, const mosquitto_property*);

  void Answer(const Address& address, const std::string& method, const std::string& payload);
  void SendWrong(const Address& address);
  Address Mutated(Address address);
  void Remember(const Address& address, bool answered);
  const Address* OneThatIsOver();
  void Send(const Address& address, const std::string& payload, bool as_failure);
  std::size_t Below(std::size_t limit) { return random_() % limit; }

  mosquitto* mosquitto_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ready_ = false;
  std::mt19937 random_{20260301};
  // Requests whose calls have ended: answered, or due before now.
  std::deque<std::pair<std::chrono::steady_clock::time_point, Address>> earlier_;
  std::atomic<int> wrong_replies_{0};
};

}  // namespace vptz_test

#endif
