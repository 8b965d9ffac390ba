#ifndef DORV_BUS_CLIENT_H
#define DORV_BUS_CLIENT_H

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "callback_thread.h"
#include "connection.h"
#include "dorv_bus.h"
#include "names.h"
#include "own_process.h"
#include "properties.h"
#include "request_identity.h"

namespace dorv {

// What is known of a service in this session.
struct ServiceWatch {
  bool watched = false;        // its presence is subscribed
  std::uint64_t instance = 0;  // a hash of the presence, which tells one service from the next; 0 without one
  // The longest request that it has answered for each method. Requests up to
  // that length need no confirmation by the broker: as long as the service is
  // present they are sent at QoS 0, which saves the caller a wake-up. Forgotten
  // when one is not answered in time.
  std::map<std::string, int, std::less<>> answered;
};

// A call that waits for its answer: on its caller's stack, or on the heap when
// it is asynchronous.
struct PendingCall {
  explicit PendingCall(TimePoint until) : waiter(until), last_moment(until) {}

  Waiter waiter;  // of an asynchronous call only the deadline is used
  TimePoint last_moment;
  RequestIdentity::Bytes identity{};  // as it was sent; the reply brings it back
  int message_id = 0;
  ServiceWatch* service = nullptr;
  std::string_view method;  // the caller's, or own_method
  int request_length = 0;
  bool confirmed = false;  // sent at QoS 1

  // Synchronous: where the reply goes.
  void* reply = nullptr;
  int capacity = 0;
  int length = 0;

  // Asynchronous: who is told, and what. The task that tells it owns the call;
  // it is made with the call, so that the result needs no memory.
  bus_callback callback = nullptr;
  std::string own_method;
  int result = 0;
  std::string bytes;
  CallbackThread::Tasks task;
};

}  // namespace dorv

// The application's handle is the object itself: it stays valid for callbacks
// and calls that still run when it is freed.
struct bus_client final : dorv::Connection::Owner, std::enable_shared_from_this<bus_client> {
 public:
  explicit bus_client(const char* name);
  ~bus_client() override;

  bool valid() const { return connection_.valid(); }
  // Keeps the object alive until Free.
  void Keep() { self_ = shared_from_this(); }
  void Free();
  // False in a child made by fork(), where nothing of it may be touched.
  bool InItsProcess() const { return process_.IsThisOne(); }

  int Connect(const char* address);
  int Disconnect();
  int Call(const char* service, const char* method, const void* request, int request_length, void* reply,
           int* reply_length, int timeout);
  int CallLater(const char* service, const char* method, const void* request, int request_length,
                bus_callback callback, int timeout);
  // An empty signal stands for all of them.
  int Subscribe(const char* service, const char* signal, bus_callback callback);
  int Unsubscribe(const char* service, const char* signal);

 private:
  struct Subscription {
    int identifier;  // comes with each message that it brought; tells one from all
    bus_callback callback;
    bool confirmed;  // by the broker
    int waiting;     // threads that wait for that
  };
  using SubscriptionKey = std::pair<std::string, std::string>;  // service, signal

  // Connection::Owner
  int RestoreSubscriptions() override;
  int SubscriptionsRestored() override;
  void Receive(const mosquitto_message& message, const mosquitto_property* properties) override;
  void PublicationConfirmed(int message_id, int reason) override;
  void SessionEnded() override;
  dorv::TimePoint EndOverdueCalls(dorv::TimePoint now) override;

  dorv::Session& session() { return connection_.session(); }

  int Send(dorv::PendingCall* call, const char* service, const char* method, const void* request, int length,
           std::uint64_t* sequence);
  int PublishRequest(dorv::PendingCall* call, std::uint64_t sequence, const dorv::Topic& topic,
                     const void* request, const dorv::Properties& properties);
  int Watch(std::string_view service, dorv::ServiceWatch** watch);
  int WatchPresence(std::string_view service);
  void NoteAnswered(const dorv::PendingCall& call);
  void Finish(std::uint64_t sequence, int result);
  void Finish(dorv::PendingCall* call, int result);
  void PostResult(dorv::PendingCall* call, int result, const void* payload);
  void ReceiveReply(const mosquitto_message& message, const mosquitto_property* properties);
  void ReceivePresence(std::string_view service, const mosquitto_message& message);
  void AllowFullTime(const dorv::ServiceWatch& watch);
  void EndCalls(const dorv::ServiceWatch& watch);
  void ReceiveSignal(const mosquitto_message& message, const mosquitto_property* properties);
  void Deliver(int identifier, std::string_view signal, const mosquitto_message& message);
  bool FindCallback(int identifier, bus_callback* callback);
  int AskForSignals(std::unique_lock<std::mutex>& lock, const SubscriptionKey& key, int identifier,
                    dorv::TimePoint deadline);

  const dorv::OwnProcess process_;
  const std::uint64_t caller_;
  dorv::Connection connection_;
  dorv::CallbackThread callbacks_;
  std::shared_ptr<bus_client> self_;
  std::uint64_t sequence_ = 0;
  std::map<std::uint64_t, dorv::PendingCall*> calls_;
  // Requests that the broker has yet to confirm. While there are any, the next
  // one goes at QoS 1 too: libmosquitto may still hold some of them back, and a
  // stop must not overtake a move.
  std::set<int> unconfirmed_;
  std::map<std::string, dorv::ServiceWatch, std::less<>> services_;
  std::map<SubscriptionKey, Subscription> subscriptions_;
  int last_identifier_ = 0;
};

#endif
