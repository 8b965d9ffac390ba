#ifndef VPTZ_TESTS_SUPPORT_RAW_MQTT_H
#define VPTZ_TESTS_SUPPORT_RAW_MQTT_H

#include <mosquitto.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vptz_test {

// A message as it travelled. Empty properties are not there.
struct RawMessage {
  std::string topic;
  std::string payload;
  std::string response_topic;
  std::string correlation;
};

// As whom somebody connects. Empty members are left out.
struct RawIdentity {
  std::string user;
  std::string password;
  std::string client_id;
  std::string will_topic;
};

// Somebody else on the broker, without the bus library: sees every message
// whose topic fits the filter and sends what it likes. Does not connect again
// when the connection is lost.
class RawMqtt {
 public:
  // Throws when it cannot connect or is refused. An empty filter subscribes to
  // nothing.
  RawMqtt(const std::string& socket_path, const std::string& filter, const RawIdentity& identity = {});
  ~RawMqtt();
  RawMqtt(const RawMqtt&) = delete;
  RawMqtt& operator=(const RawMqtt&) = delete;

  // The count-th message since the last Clear whose topic contains the text;
  // throws when it does not come.
  RawMessage WaitFor(const std::string& text, std::size_t count = 1);
  // Those since the last Clear.
  std::vector<RawMessage> All();
  void Clear();

  // Subscribes to more; returns when the broker has answered.
  void Subscribe(const std::string& filter);

  // Sends a message; returns when the broker has confirmed or refused it.
  void Send(const RawMessage& message, bool retain = false);

  // Makes the broker tell the will; the connection has ended then.
  void LeaveWithWill();

 private:
  void Run();
  void Free();
  static void OnConnect(mosquitto*, void* self, int reason, int flags, const mosquitto_property*);
  static void OnSubscribe(mosquitto*, void* self, int id, int count, const int* granted,
                          const mosquitto_property*);
  static void OnMessage(mosquitto*, void* self, const mosquitto_message*, const mosquitto_property*);
  static void OnPublish(mosquitto*, void* self, int id, int reason, const mosquitto_property*);
  static void OnDisconnect(mosquitto*, void* self, int reason, const mosquitto_property*);
  void NoteRefusal(int reason);
  void CountAnswer(int& answers);

  mosquitto* mosquitto_;
  std::string filter_;
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable changed_;
  int refusal_ = 0;     // why the first attempt failed
  int connected_ = 0;   // answers to connecting,
  int subscribed_ = 0;  // to subscribing
  int confirmed_ = 0;   // and to sending
  std::vector<RawMessage> messages_;
};

}  // namespace vptz_test

#endif
