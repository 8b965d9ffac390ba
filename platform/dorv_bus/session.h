// A session with the broker over libmosquitto: from the socket to its end.
#ifndef DORV_BUS_SESSION_H
#define DORV_BUS_SESSION_H

#include <mosquitto.h>

#include <cstdint>
#include <memory>
#include <string>

#include "address.h"
#include "connect_settings.h"
#include "log_writer.h"
#include "shared_socket.h"
#include "trouble.h"
#include "waiter.h"

namespace dorv {

// Where to connect to, as the application said last.
struct Target {
  Address address;
  ConnectSettings settings;
  std::string text;  // of the address, for the log
};

// One mutex guards it, the connection's; a thread holds it around calls of
// libmosquitto, never while it sleeps or a callback of the application runs.
class Session final : public SharedSocket::Stream {
 public:
  // What a client or a service does in a session. Called with the mutex held, by
  // the thread that reads the socket; must not block. Only RestoreSubscriptions
  // and SubscriptionsRestored may send.
  class User {
   public:
    virtual ~User() = default;

    // Before each attempt to connect. 0 or -ENOMEM.
    virtual int SetWill(mosquitto*) { return 0; }

    // A session has begun: subscribes. Returns the message id of the last
    // subscription, or a negative errno value.
    virtual int RestoreSubscriptions() = 0;

    // The broker has confirmed that one: calls DeclareReady, at once or when it has
    // done what else is to be done. 0, or a negative errno value.
    virtual int SubscriptionsRestored() = 0;

    virtual void Receive(const mosquitto_message& message, const mosquitto_property* properties) = 0;

    // The broker has confirmed a message that was published at QoS 1.
    virtual void PublicationConfirmed(int message_id, int reason) = 0;

    // Fails what waits for something of the session.
    virtual void SessionEnded() = 0;
  };

  // Begins the next session when this one is lost.
  class Keeper {
   public:
    virtual ~Keeper() = default;
    virtual void SessionReady() = 0;
    virtual void SessionFailed(int error) = 0;
  };

  // What a subscription brings of the messages that the broker has kept.
  enum class Kept { kNone, kLast };

  Session(User* user, Keeper* keeper, SharedSocket& socket, const Trouble& trouble, LogWriter& log,
          std::string client_id);
  ~Session() override;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  bool valid() const { return mosquitto_ != nullptr; }
  const std::string& client_id() const { return client_id_; }

  // All of the following need the mutex held.

  // Whether there is a session, or one begins.
  bool open() const { return state_ != State::kNone; }
  // Whether requests, signals and replies can be sent.
  bool ready() const { return state_ == State::kReady; }
  // Tells one session from the next.
  std::uint64_t number() const { return number_; }

  // Makes a fresh instance of libmosquitto with everything that the target needs. 0
  // or a negative errno value.
  int Prepare(const std::shared_ptr<const Target>& target);

  // Without the mutex, after Prepare: reaches the broker, unless the background
  // thread is to wake. Until Begin or Discard no other thread uses the session.
  int Dial(const Target& target);

  // After Dial: lets the session begin, or lets go of it.
  void Begin();
  void Discard();

  // Ends the session, with the will or, if it fails anyway, without a word.
  void End();
  void Fail(int error);

  // The session can be used.
  void DeclareReady();

  // The session cannot be used: it fails with that error when all that was read is
  // dealt with. The log tells what is wrong as often as the error itself.
  void Refuse(int error, const char* what, const char* of_what);

  // Publishes at once. 0 or a negative errno value: nothing was sent.
  int Publish(int* message_id, const char* topic, const void* payload, int length, int qos, bool retain,
              const mosquitto_property* properties);

  // Subscribes without waiting; `identifier` comes with each message, 0 for
  // none. The message id, or a negative errno value.
  int Subscribe(const char* topic, int qos, int identifier, Kept kept = Kept::kNone);

  // 0 or a negative errno value.
  int Unsubscribe(const char* topic);

  // Those who wait for the broker to confirm a subscription, by its message id.
  EventWaiters& confirmations() { return confirmations_; }

  // When to call KeepAlive next. KeepAlive sends the pings, notices their loss, and
  // ends a session that does not begin in time.
  TimePoint next_duty() const;
  void KeepAlive(TimePoint now);

  // SharedSocket::Stream
  int descriptor() const override { return mosquitto_socket(mosquitto_); }
  bool WantsToWrite() const override { return mosquitto_want_write(mosquitto_); }
  void ReadAndWrite() override;

 private:
  enum class State {
    kNone,
    kHandshake,  // there is a socket, no session yet
    kReady
  };

  // What libmosquitto's callbacks have noted during the last read: they must neither
  // send nor end the session.
  struct Noted {
    bool any = false;         // a callback has run
    bool begun = false;       // the broker has accepted the session
    bool subscribed = false;  // and confirmed the last of its subscriptions
    bool ended = false;       // the session has ended
    int failure = 0;          // what is wrong with the session
  };

  static void OnConnect(mosquitto*, void* self, int reason, int flags, const mosquitto_property*);
  static void OnDisconnect(mosquitto*, void* self, int reason, const mosquitto_property*);
  static void OnSubscribe(mosquitto*, void* self, int message_id, int count, const int* granted,
                          const mosquitto_property*);
  static void OnMessage(mosquitto*, void* self, const mosquitto_message*, const mosquitto_property*);
  static void OnPublish(mosquitto*, void* self, int message_id, int reason, const mosquitto_property*);

  int Read();
  void Proceed();
  void Subscribed(int message_id, int result);
  void LetGo();
  int ResultOfSending(int result);

  User* const user_;
  Keeper* const keeper_;
  SharedSocket& socket_;
  const Trouble& trouble_;
  LogWriter& log_;
  const std::string client_id_;
  mosquitto* mosquitto_;
  std::shared_ptr<const Target> target_;
  State state_ = State::kNone;
  std::uint64_t number_ = 0;
  TimePoint handshake_deadline_{};
  TimePoint keep_alive_at_{};
  int last_subscription_ = 0;  // message id of the last one that is restored
  Noted noted_;
  EventWaiters confirmations_;
};

}  // namespace dorv

#endif
