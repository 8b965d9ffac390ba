// One connection to the broker, kept up by a background thread.
//
// Who reads the socket: normally the background thread. A thread that waits for
// an answer takes the socket over ("drives") until it has it, which saves a
// hand-over between threads for each call. Further waiting threads follow: they
// sleep until the driver has read their answer, and one of them drives on when
// the driver leaves. So a slow call holds up nobody.
//
// One mutex guards everything, libmosquitto included. It is held around calls
// of libmosquitto, never while a thread sleeps or a callback of the application
// runs.
#ifndef DORV_BUS_CONNECTION_H
#define DORV_BUS_CONNECTION_H

#include <mosquitto.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "address.h"
#include "event.h"
#include "log_writer.h"
#include "settings.h"
#include "trouble.h"
#include "waiter.h"

namespace dorv {

class Connection {
 public:
  // What a client or a service adds to a connection. Everything but Serve is
  // called with the mutex held, from the background or a driving thread, and
  // must not block; only Restore, Restored and Serve may send.
  class Owner {
   public:
    virtual ~Owner() = default;

    // Before each attempt to connect: sets the will. 0 or -ENOMEM.
    virtual int Prepare(mosquitto*) { return 0; }

    // A session has begun: subscribes. Returns the message id of the last
    // subscription, or a negative errno value.
    virtual int Restore() = 0;

    // The broker has confirmed that one: calls Open, at once or when it has
    // done what else is to be done. 0, or a negative errno value.
    virtual int Restored() = 0;

    virtual void Receive(const mosquitto_message& message, const mosquitto_property* properties) = 0;

    // The broker has confirmed a message published at QoS 1.
    virtual void Acknowledge(int message_id, int reason) = 0;

    // The session has ended: whoever waits for something of it fails.
    virtual void Lose() = 0;

    // Ends what has run out of time; returns when to be called next.
    virtual TimePoint Tick(TimePoint now) = 0;

    // Without the mutex, on the background thread, after it has read.
    virtual void Serve() {}
  };

  Connection(Owner* owner, std::string client_id);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Whether construction went well; nothing else works without.
  bool valid() const {
    return mosquitto_ != nullptr && epoll_ >= 0 && wake_background_.valid() && wake_driver_.valid();
  }

  std::mutex& mutex() { return mutex_; }
  const std::string& client_id() const { return client_id_; }

  // All of the following need the mutex held.

  bool ready() const { return state_ == State::kReady; }
  // Tells sessions apart.
  std::uint64_t session() const { return session_; }

  // Connects and stays connected. `keep` keeps the owner alive for as long as
  // the background thread runs. Results of bus_connect.
  int Connect(std::unique_lock<std::mutex>& lock, std::shared_ptr<void> keep, Address address,
              Settings settings);

  // Leaves the broker and no longer tries. Results of bus_disconnect.
  int Disconnect();

  // The session can be used: the connection is ready.
  void Open();

  // The session cannot be used: it ends for that reason when what has been read
  // is dealt with. What is to be said about it goes to the log as often as the
  // reason itself.
  void Refuse(int error, const char* what, const char* of_what);

  // For lines that come up while the mutex is held.
  LogWriter& log() { return log_; }

  // Publishes at once. 0 or a negative errno value: nothing was sent.
  int Publish(int* message_id, const char* topic, const void* payload, int length, int qos, bool retain,
              const mosquitto_property* properties);

  // What a subscription brings of the messages that the broker has kept.
  enum class Kept { kNone, kLast };

  // Subscribes without waiting; `identifier` comes with each message, 0 for
  // none. The message id, or a negative errno value.
  int Subscribe(const char* topic, int qos, int identifier, Kept kept = Kept::kNone);

  // Subscribe, without kept messages, that waits for the broker's confirmation.
  int SubscribeAndWait(std::unique_lock<std::mutex>& lock, const char* topic, int qos, int identifier,
                       TimePoint deadline);

  // 0 or a negative errno value.
  int Unsubscribe(const char* topic);

  // Lets the waiter read the socket if nobody else does. Before sending, so that
  // the answer does not wake the background thread. Await or Leave follows.
  void TakeOver(Waiter& waiter);

  // For a waiter that has nothing to wait for after all.
  void Leave(Waiter& waiter);

  // Waits until the waiter is finished or its deadline has come; reads the
  // socket meanwhile if nobody else does. Returns the waiter's result. Needs no
  // memory: whoever waits has something under way.
  int Await(std::unique_lock<std::mutex>& lock, Waiter& waiter);

  // Has the background thread look at its owner's deadlines again.
  void WakeBackground() { wake_background_.Set(); }

  // Without the mutex: ends everything. Waits for the background thread, but at
  // most one second: it may be looking up a host name. It then ends later.
  void Close();

  // Whether this is this connection's background thread.
  bool OnBackgroundThread() const;

 private:
  enum class State {
    kIdle,       // not to be connected
    kRetry,      // next attempt at retry_at_
    kDialing,    // the background thread tries to reach the broker, unlocked
    kHandshake,  // there is a socket, no session yet
    kReady
  };

  struct Confirmation {
    int message_id;
    Waiter* waiter;
  };

  // Where to connect to, as the application said last.
  struct Target {
    Address address;
    Settings settings;
    std::string text;  // of the address, for the log
  };

  static void OnConnect(mosquitto*, void* self, int reason, int flags, const mosquitto_property*);
  static void OnDisconnect(mosquitto*, void* self, int reason, const mosquitto_property*);
  static void OnSubscribe(mosquitto*, void* self, int message_id, int count, const int* granted,
                          const mosquitto_property*);
  static void OnMessage(mosquitto*, void* self, const mosquitto_message*, const mosquitto_property*);
  static void OnPublish(mosquitto*, void* self, int message_id, int reason, const mosquitto_property*);

  static int NewEpoll(const Event& wake);

  // The background thread.
  void Run();
  void ForgetOldSocket();
  void Turn(std::unique_lock<std::mutex>& lock);
  void Sleep(std::unique_lock<std::mutex>& lock, TimePoint until, bool* socket_ready);
  void Dial(std::unique_lock<std::mutex>& lock);
  int PrepareInstance();
  void Misc(TimePoint now);

  // The socket.
  bool HasSocket() const { return state_ == State::kHandshake || state_ == State::kReady; }
  void Drive(std::unique_lock<std::mutex>& lock, Waiter& waiter);
  void Follow(Waiter& waiter);
  void Unfollow(Waiter& waiter);
  void HandOver(Waiter& waiter);
  void Pump();
  void Arm();
  void SetInterest(unsigned events);
  void KeepWriting();
  int Sent(int result);

  // Sessions.
  void Fail(int error);
  void EndSession(bool say_goodbye);
  void Restore();
  void Settle(int result);
  void Confirm(int message_id, int result);

  Owner* const owner_;
  const std::string client_id_;
  std::mutex mutex_;
  LogWriter log_;  // first: its construction may fail
  mosquitto* mosquitto_ = nullptr;
  std::thread thread_;
  std::condition_variable thread_ended_;
  bool running_ = false;
  bool closing_ = false;

  std::shared_ptr<const Target> target_;
  State state_ = State::kIdle;
  std::uint64_t attempt_ =
      0;  // counts bus_connect and bus_disconnect: an attempt made for an older one is dropped
  std::uint64_t session_ = 0;
  TimePoint retry_at_{};
  TimePoint handshake_deadline_{};
  TimePoint misc_at_{};
  int last_subscription_ = 0;
  int failure_ = 0;            // what a callback found wrong with the session
  bool had_event_ = false;     // a callback ran during the last read
  bool disconnected_ = false;  // the session has ended during the last read
  bool restore_ = false;       // a session has begun during the last read
  bool restored_ = false;      // its subscriptions have been confirmed during the last read
  std::vector<Waiter*> connecting_;
  std::vector<Confirmation> confirmations_;
  Trouble trouble_;

  Event wake_background_;
  Event wake_driver_;
  int epoll_ = -1;                    // of the background thread: wake_background_ and the socket
  std::uint64_t polled_session_ = 0;  // whose socket that is
  bool driven_ = false;
  Waiter* followers_ = nullptr;  // the first of them
  unsigned interest_ = 0;        // what the background thread waits for on the socket
};

}  // namespace dorv

#endif
