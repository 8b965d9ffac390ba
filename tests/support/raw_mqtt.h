#ifndef VPTZ_TESTS_SUPPORT_RAW_MQTT_H
#define VPTZ_TESTS_SUPPORT_RAW_MQTT_H

#include <mosquitto.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace vptz_test {

// A message as it travelled. Empty properties are not there.
struct RawMessage {
  std::string topic;
  std::string payload;
  std::string response_topic;
  std::string correlation;
};

// Somebody else on the broker, without the bus library: sees every message
// whose topic fits the filter and sends what it likes.
class RawMqtt {
 public:
  // Throws when it cannot connect. An empty filter subscribes to nothing.
  RawMqtt(const std::string& socket_path, const std::string& filter);
  ~RawMqtt();
  RawMqtt(const RawMqtt&) = delete;
  RawMqtt& operator=(const RawMqtt&) = delete;

  // The count-th message since the last Clear whose topic contains the text;
  // throws when it does not come.
  RawMessage WaitFor(const std::string& text, std::size_t count = 1);
  // Those since the last Clear.
  std::vector<RawMessage> All();
  void Clear();

  // Sends a message; returns when the broker has confirmed it.
  void Send(const RawMessage& message);

 private:
  static void OnConnect(mosquitto*, void* self, int reason, int flags, const mosquitto_property*);
  static void OnSubscribe(mosquitto*, void* self, int id, int count, const int* granted,
                          const mosquitto_property*);
  static void OnMessage(mosquitto*, void* self, const mosquitto_message*, const mosquitto_property*);
  static void OnPublish(mosquitto*, void* self, int id, int reason, const mosquitto_property*);
  void BecomeReady();

  mosquitto* mosquitto_;
  std::string filter_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ready_ = false;
  int confirmed_ = 0;
  std::vector<RawMessage> messages_;
};

}  // namespace vptz_test

#endif
