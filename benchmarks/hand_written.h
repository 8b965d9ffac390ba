// The same exchange written by hand on libmosquitto: what the bus is held
// against.
#ifndef VPTZ_BENCHMARKS_HAND_WRITTEN_H
#define VPTZ_BENCHMARKS_HAND_WRITTEN_H

#include <string>

struct mosquitto;

// One MQTT 5 connection whose socket the caller drives with poll.
class HandWritten {
 public:
  // Connects to the socket and subscribes to `topic`; `qos` is the requests'.
  HandWritten(const std::string& socket_path, const std::string& client_id, const std::string& topic, int qos);
  ~HandWritten();
  HandWritten(const HandWritten&) = delete;
  HandWritten& operator=(const HandWritten&) = delete;

  // Sends a request and reads until its reply is there.
  void Call(const void* request, int length);

  // Answers each request with its own bytes, for ever.
  [[noreturn]] void Serve();

 private:
  struct Message;

  void Turn();

  mosquitto* instance_;
  std::string topic_;
  int qos_;
  bool subscribed_ = false;
  bool received_ = false;
  std::string payload_;
  std::string response_topic_;
  std::string correlation_;
  unsigned long sequence_ = 0;
};

#endif
