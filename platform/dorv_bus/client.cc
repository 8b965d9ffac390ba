// Method calls. Subscriptions and their delivery are in signals.cc.
#include "client.h"

#include <mqtt_protocol.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

#include "errors.h"
#include "mosquitto_library.h"
#include "names.h"
#include "properties.h"
#include "random.h"
#include "sigpipe_guard.h"

using dorv::Clock;
using dorv::PendingCall;
using dorv::ServiceWatch;
using dorv::TimePoint;

namespace {

// How long the answer, or word of a service that has been there before, may come
// after the broker has taken a request for a service without a presence. A service
// executes only what the broker takes after its presence, so none serves that
// request. The time is for brokers that hold back what they have kept.
constexpr std::chrono::milliseconds kPresenceGrace{50};

std::chrono::seconds Timeout(int timeout) {
  return std::min(std::chrono::seconds(timeout > 0 ? timeout : BUS_DEFAULT_TIMEOUT), dorv::kLongestTimeout);
}

// Of what tells a service's presence from another's. Never 0.
std::uint64_t HashOf(const mosquitto_message& presence) {
  const std::string_view bytes(static_cast<const char*>(presence.payload),
                               static_cast<std::size_t>(presence.payloadlen));
  return std::hash<std::string_view>()(bytes) | 1;
}

// Whether a request like this one has been answered by the service that is there.
bool HasAnswered(const ServiceWatch& service, std::string_view method, int length) {
  const auto answered = service.answered.find(method);
  return service.instance != 0 && answered != service.answered.end() && length <= answered->second;
}

// Has its waiter read the socket, unless another caller does, from before the
// request is sent until the call ends. Needs the connection's mutex at its begin
// and end.
class ReadingTurn {
 public:
  ReadingTurn(dorv::SharedSocket& socket, dorv::Waiter& waiter) : socket_(socket), waiter_(waiter) {
    socket_.TakeTurn(waiter_);
  }
  ~ReadingTurn() { socket_.LeaveTurn(waiter_); }
  ReadingTurn(const ReadingTurn&) = delete;
  ReadingTurn& operator=(const ReadingTurn&) = delete;

 private:
  dorv::SharedSocket& socket_;
  dorv::Waiter& waiter_;
};

}  // namespace

bus_client::bus_client(const char* name)
    : caller_(dorv::RandomNumber()), connection_(this, dorv::MakeClientId(name)) {}

bus_client::~bus_client() { dorv::ReleaseLibrary(); }

void bus_client::Free() {
  connection_.Close();
  callbacks_.Close();
  // May be the last reference but the caller's own.
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  self_.reset();
}

int bus_client::Connect(const char* address) { return connection_.Connect(address, shared_from_this()); }

int bus_client::Disconnect() { return connection_.Disconnect(); }

int bus_client::Call(const char* service, const char* method, const void* request, int request_length,
                     void* reply, int* reply_length, int timeout) {
  if (!dorv::IsServiceName(service) || !dorv::IsName(method) || !dorv::IsBytes(request, request_length) ||
      reply_length == nullptr || !dorv::IsBytes(reply, *reply_length)) {
    return -EINVAL;
  }
  PendingCall call(Clock::now() + Timeout(timeout));
  const dorv::SigpipeGuard guard;
  call.reply = reply;
  call.capacity = *reply_length;
  std::uint64_t sequence = 0;
  std::unique_lock<std::mutex> lock(connection_.mutex());
  const ReadingTurn turn(connection_.socket(), call.waiter);
  int result = Send(&call, service, method, request, request_length, &sequence);
  if (result == 0) {
    result = connection_.socket().Await(lock, call.waiter);
    if (calls_.erase(sequence) > 0) {
      call.service->answered.clear();
    }
  }
  if (result >= 0) {
    *reply_length = call.length;
  }
  return result;
}

int bus_client::CallLater(const char* service, const char* method, const void* request, int request_length,
                          bus_callback callback, int timeout) {
  if (!dorv::IsServiceName(service) || !dorv::IsName(method) || !dorv::IsBytes(request, request_length) ||
      callback == nullptr) {
    return -EINVAL;
  }
  const auto call = std::make_shared<PendingCall>(Clock::now() + Timeout(timeout));
  const dorv::SigpipeGuard guard;
  call->callback = callback;
  call->own_method = method;
  dorv::CallbackThread::Tasks task;
  task.emplace_back([this, call] {
    const char* const bytes = call->bytes.empty() ? nullptr : call->bytes.data();
    call->callback(this, nullptr, call->own_method.c_str(), bytes, call->result);
  });
  callbacks_.Start(shared_from_this());
  std::uint64_t sequence = 0;
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  const int result = Send(call.get(), service, method, request, request_length, &sequence);
  if (result == 0) {
    call->task = std::move(task);
    connection_.socket().WakeBackground();
  }
  return result;
}

// Sends a request and enters it into the table of those that wait. 0, or a
// negative errno value when nothing was sent.
int bus_client::Send(PendingCall* call, const char* service, const char* method, const void* request,
                     int length, std::uint64_t* sequence) {
  if (!session().ready()) {
    return -ENOTCONN;
  }
  if (Clock::now() >= call->last_moment) {
    return -ETIMEDOUT;
  }
  const int watched = Watch(service, &call->service);
  if (watched < 0) {
    return watched;
  }
  call->method = call->callback == nullptr ? std::string_view(method) : call->own_method;
  call->request_length = length;
  call->confirmed = !unconfirmed_.empty() || !HasAnswered(*call->service, call->method, length);
  *sequence = ++sequence_;
  call->identity = dorv::RequestIdentity::Make(caller_, *sequence, call->last_moment).Encode();
  dorv::Properties properties;
  if (!properties.AddResponseTopic(dorv::Topic::Reply(session().client_id()).c_str()) ||
      !properties.AddCorrelation(call->identity)) {
    return -ENOMEM;
  }
  return PublishRequest(call, *sequence, dorv::Topic::Call(service, method), request, properties);
}

// Publishes a request and enters it into the tables of what is under way.
int bus_client::PublishRequest(PendingCall* call, std::uint64_t sequence, const dorv::Topic& topic,
                               const void* request, const dorv::Properties& properties) {
  // Made before the request goes out: once it is out, entering it must not fail.
  std::map<std::uint64_t, PendingCall*> entry = {{sequence, call}};
  std::set<int> unconfirmed;
  if (call->confirmed) {
    unconfirmed.insert(0);
  }
  const int result = session().Publish(&call->message_id, topic.c_str(), request, call->request_length,
                                       call->confirmed ? 1 : 0, false, properties.get());
  if (result < 0) {
    return result;
  }
  calls_.merge(entry);
  if (call->confirmed) {
    auto message = unconfirmed.extract(0);
    message.value() = call->message_id;
    unconfirmed_.insert(std::move(message));
  } else {
    call->message_id = 0;
  }
  return 0;
}

// Has the broker tell whether the service is there; told once a session. 0, or a
// negative errno value: without that nothing could be said about a call.
int bus_client::Watch(std::string_view service, ServiceWatch** watch) {
  auto entry = services_.find(service);
  if (entry == services_.end()) {
    entry = services_.emplace(std::string(service), ServiceWatch()).first;
  }
  *watch = &entry->second;
  if (!entry->second.watched) {
    const int result = WatchPresence(service);
    if (result < 0) {
      return result;
    }
    entry->second.watched = true;
  }
  return 0;
}

int bus_client::WatchPresence(std::string_view service) {
  return session().Subscribe(dorv::Topic::Presence(service).c_str(), 0, 0, dorv::Session::Kept::kLast);
}

void bus_client::Finish(std::uint64_t sequence, int result) {
  const auto entry = calls_.find(sequence);
  if (entry != calls_.end()) {
    PendingCall* call = entry->second;
    calls_.erase(entry);
    Finish(call, result);
  }
}

// Ends a call that is out of the table.
void bus_client::Finish(PendingCall* call, int result) {
  if (call->callback == nullptr) {
    call->waiter.Finish(result);
  } else {
    PostResult(call, result, nullptr);
  }
}

void bus_client::PostResult(PendingCall* call, int result, const void* payload) {
  call->result = result;
  try {
    if (payload != nullptr) {
      call->bytes.assign(static_cast<const char*>(payload), static_cast<std::size_t>(result));
    }
  } catch (const std::bad_alloc&) {
    call->result = -ENOMEM;
  }
  callbacks_.Post(std::move(call->task));
}

void bus_client::Receive(const mosquitto_message& message, const mosquitto_property* properties) {
  if (dorv::IsReplyTopic(message.topic)) {
    ReceiveReply(message, properties);
    return;
  }
  const std::string_view service = dorv::PresenceOf(message.topic);
  if (!service.empty()) {
    ReceivePresence(service, message);
  } else {
    ReceiveSignal(message, properties);
  }
}

void bus_client::ReceiveReply(const mosquitto_message& message, const mosquitto_property* properties) {
  const auto identity = dorv::ReadIdentity(properties);
  const auto entry = identity ? calls_.find(identity->sequence) : calls_.end();
  // The whole identity, not the number alone: another service could guess that.
  if (entry == calls_.end() || identity->Encode() != entry->second->identity) {
    return;  // late, or not for us
  }
  PendingCall* call = entry->second;
  calls_.erase(entry);
  NoteAnswered(*call);
  const int error = dorv::ReadError(properties);
  if (error < 0) {
    Finish(call, error);
  } else if (call->callback != nullptr) {
    PostResult(call, message.payloadlen, message.payload);
  } else if (message.payloadlen > call->capacity) {
    call->waiter.Finish(-EMSGSIZE);
  } else {
    if (message.payloadlen > 0) {
      std::memcpy(call->reply, message.payload, static_cast<std::size_t>(message.payloadlen));
    }
    call->length = message.payloadlen;
    call->waiter.Finish(0);
  }
}

void bus_client::NoteAnswered(const PendingCall& call) {
  if (!call.confirmed) {
    return;
  }
  try {
    int& longest = call.service->answered[std::string(call.method)];
    longest = std::max(longest, call.request_length);
  } catch (const std::bad_alloc&) {
    // All that follows: the broker confirms the next request too.
  }
}

void bus_client::ReceivePresence(std::string_view service, const mosquitto_message& message) {
  const auto entry = services_.find(service);
  if (entry == services_.end()) {
    return;
  }
  ServiceWatch& watch = entry->second;
  const std::uint64_t instance = message.payloadlen > 0 ? HashOf(message) : 0;
  const std::uint64_t before = std::exchange(watch.instance, instance);
  if (before == 0 && message.retain) {
    AllowFullTime(watch);
  } else if (before != 0 && instance != before) {
    watch.answered.clear();
    EndCalls(watch);
  }
}

// The service was there before the calls' requests: they have all their time.
void bus_client::AllowFullTime(const ServiceWatch& watch) {
  for (const auto& [sequence, call] : calls_) {
    if (call->service == &watch) {
      call->waiter.deadline = call->last_moment;
      call->waiter.expiry_result = -ETIMEDOUT;
    }
  }
}

// The service is gone, and with it the calls that it may have had. Those that the
// broker has yet to take go to the one that is there instead.
void bus_client::EndCalls(const ServiceWatch& watch) {
  for (auto next = calls_.begin(); next != calls_.end();) {
    const auto [sequence, call] = *next++;
    const bool under_way = watch.instance != 0 && call->message_id != 0;
    if (call->service == &watch && !under_way) {
      Finish(sequence, -ECONNRESET);
    }
  }
}

// The broker has the request, or tells why it did not pass it on.
void bus_client::PublicationConfirmed(int message_id, int reason) {
  if (unconfirmed_.erase(message_id) == 0) {
    return;
  }
  const auto entry = std::find_if(calls_.begin(), calls_.end(),
                                  [&](const auto& one) { return one.second->message_id == message_id; });
  if (entry == calls_.end()) {
    return;
  }
  PendingCall* call = entry->second;
  call->message_id = 0;  // the number may be used again while this call waits
  if (reason == MQTT_RC_NO_MATCHING_SUBSCRIBERS) {
    Finish(entry->first, -ESRCH);
  } else if (reason >= MQTT_RC_UNSPECIFIED) {
    Finish(entry->first, dorv::ErrorFromReason(reason));
  } else if (call->service->instance == 0) {
    // There was a taker, but only a monitor that subscribes to everything, or a
    // service that is about to announce itself and drops it.
    call->waiter.deadline = std::min(call->last_moment, Clock::now() + kPresenceGrace);
    call->waiter.expiry_result = -ESRCH;
    call->waiter.wake.notify_one();
    if (call->callback != nullptr) {
      connection_.socket().WakeBackground();  // which minds its deadline
    }
  }
}

void bus_client::SessionEnded() {
  unconfirmed_.clear();
  for (auto& [name, watch] : services_) {
    watch = ServiceWatch();
  }
  for (const auto& [sequence, call] : std::exchange(calls_, {})) {
    Finish(call, -ECONNRESET);
  }
}

// Ends asynchronous calls that ran out of time; the others mind their own.
TimePoint bus_client::EndOverdueCalls(TimePoint now) {
  TimePoint next = TimePoint::max();
  for (auto one = calls_.begin(); one != calls_.end();) {
    const auto [sequence, call] = *one++;
    if (call->callback == nullptr) {
      continue;
    }
    if (call->waiter.deadline <= now) {
      call->service->answered.clear();
      Finish(sequence, call->waiter.expiry_result);
    } else {
      next = std::min(next, call->waiter.deadline);
    }
  }
  return next;
}
