// The connection's sessions: how they begin, end and are reported. Its
// background thread is in background.cc, the reading of the socket in drive.cc.
#include "connection.h"

#include <mqtt_protocol.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "dorv_bus.h"
#include "errors.h"
#include "process.h"
#include "properties.h"

namespace dorv {

int Connection::NewEpoll(const Event& wake) {
  const int epoll = epoll_create1(EPOLL_CLOEXEC);
  epoll_event interest{};
  interest.events = EPOLLIN;
  interest.data.fd = wake.descriptor();
  if (epoll >= 0 && epoll_ctl(epoll, EPOLL_CTL_ADD, wake.descriptor(), &interest) != 0) {
    close(epoll);
    return -1;
  }
  return epoll;
}

Connection::Connection(Owner* owner, std::string client_id)
    : owner_(owner),
      client_id_(std::move(client_id)),
      mosquitto_(NewMosquitto(client_id_.c_str(), this)),
      epoll_(NewEpoll(wake_background_)) {}

Connection::~Connection() {
  if (mosquitto_ != nullptr) {
    mosquitto_destroy(mosquitto_);
  }
  if (epoll_ >= 0) {
    close(epoll_);
  }
}

int Connection::Connect(std::unique_lock<std::mutex>& lock, std::shared_ptr<void> keep, Address address,
                        Settings settings) {
  if (closing_) {
    return -ENOTCONN;
  }
  // What may fail comes before anything is changed.
  std::string text = address.Text();
  auto target = std::make_shared<Target>(Target{std::move(address), std::move(settings), std::move(text)});
  connecting_.reserve(connecting_.size() + 1);
  if (!running_) {
    thread_ = StartQuietThread([this, keep = std::move(keep)] { Run(); });
    running_ = true;
  }
  const SigpipeGuard guard;
  EndSession(true);
  Settle(-ECONNRESET);
  target_ = std::move(target);
  trouble_ = Trouble();
  ++attempt_;
  state_ = State::kRetry;
  retry_at_ = Clock::now();
  WakeBackground();

  Waiter waiter(Clock::now() + target_->settings.connect_timeout);
  connecting_.push_back(&waiter);
  const int result = Await(lock, waiter);
  connecting_.erase(std::remove(connecting_.begin(), connecting_.end(), &waiter), connecting_.end());
  if (result < 0) {
    // A caller that sees the failure finds its reason in the log, unless that is
    // stuck or his time is over.
    lock.unlock();
    log_.Wait(std::min(waiter.deadline, Clock::now() + std::chrono::milliseconds(100)));
    lock.lock();
  }
  return result;
}

int Connection::Disconnect() {
  if (state_ == State::kIdle) {
    return -ENOTCONN;
  }
  const SigpipeGuard guard;
  ++attempt_;
  EndSession(true);
  state_ = State::kIdle;
  Settle(-ECONNRESET);
  WakeBackground();
  return 0;
}

void Connection::Close() {
  std::unique_lock<std::mutex> lock(mutex_);
  closing_ = true;
  Disconnect();
  WakeBackground();
  if (!running_) {
    return;
  }
  const bool ended = thread_ended_.wait_for(lock, std::chrono::seconds(1), [this] { return !running_; });
  lock.unlock();
  if (ended) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

// Ends the session, if there is one, for a reason that lies in it.
void Connection::Fail(int error) {
  if (!HasSocket()) {
    return;
  }
  EndSession(false);
  const TimePoint now = Clock::now();
  // A password that was wrong once is wrong a second later too.
  const bool refused = error == -EKEYREJECTED || error == -EACCES || error == -EOPNOTSUPP;
  const std::chrono::seconds pause(refused ? 10 : 1);
  state_ = State::kRetry;
  retry_at_ = now + pause;
  trouble_.Report(error, target_->text, now, log_);
  Settle(error);
  WakeBackground();
}

// Leaves without a session, and tells everybody who waits for one.
void Connection::EndSession(bool say_goodbye) {
  if (!HasSocket()) {
    return;
  }
  if (say_goodbye) {
    // With the will, so that callers learn at once that a service is gone.
    mosquitto_disconnect_v5(mosquitto_, MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
  }
  SigpipeGuard::NoteBrokenPipe();
  state_ = State::kRetry;
  ++session_;
  // Closes the socket and throws away what is still queued: nothing is sent late.
  mosquitto_reinitialise(mosquitto_, client_id_.c_str(), true, this);
  for (const Confirmation& confirmation : std::exchange(confirmations_, {})) {
    confirmation.waiter->Finish(-ECONNRESET);
  }
  owner_->Lose();
  if (driven_) {
    wake_driver_.Set();
  }
}

// A session has begun.
void Connection::Restore() {
  restore_ = false;
  last_subscription_ = owner_->Restore();
  if (last_subscription_ < 0) {
    failure_ = last_subscription_;
  }
}

void Connection::Open() {
  state_ = State::kReady;
  trouble_.Over(target_->text, log_);
  Settle(0);
}

void Connection::Refuse(int error, const char* what, const char* of_what) {
  failure_ = error;
  if (trouble_.IsNew(error, Clock::now())) {
    DORV_LOG_LATER(log_, ZERK_LOG_ERROR, "%s: %s", what, of_what);
  }
}

// Gives those who wait for a connection their result.
void Connection::Settle(int result) {
  for (Waiter* waiter : connecting_) {
    waiter->Finish(result);
  }
  connecting_.clear();
}

// What to make of libmosquitto's result for something that was to be sent: 0, or
// a negative errno value and nothing was sent.
int Connection::Sent(int result) {
  if (result == MOSQ_ERR_SUCCESS) {
    KeepWriting();
    return 0;
  }
  const int error = ErrorFromMosquitto(result);
  if (error == -EMSGSIZE || error == -ENOMEM || error == -EINVAL) {
    return error;
  }
  Fail(-ECONNRESET);
  return -ENOTCONN;
}

int Connection::Publish(int* message_id, const char* topic, const void* payload, int length, int qos,
                        bool retain, const mosquitto_property* properties) {
  return Sent(mosquitto_publish_v5(mosquitto_, message_id, topic, length, payload, qos, retain, properties));
}

int Connection::Subscribe(const char* topic, int qos, int identifier, Kept kept) {
  mosquitto_property* properties = nullptr;
  if (identifier > 0 &&
      mosquitto_property_add_varint(&properties, MQTT_PROP_SUBSCRIPTION_IDENTIFIER,
                                    static_cast<std::uint32_t>(identifier)) != MOSQ_ERR_SUCCESS) {
    return -ENOMEM;
  }
  const int options = kept == Kept::kLast ? MQTT_SUB_OPT_SEND_RETAIN_ALWAYS : MQTT_SUB_OPT_SEND_RETAIN_NEVER;
  int message_id = 0;
  const int result = Sent(mosquitto_subscribe_v5(mosquitto_, &message_id, topic, qos, options, properties));
  mosquitto_property_free_all(&properties);
  return result < 0 ? result : message_id;
}

int Connection::SubscribeAndWait(std::unique_lock<std::mutex>& lock, const char* topic, int qos, int identifier,
                                 TimePoint deadline) {
  confirmations_.reserve(confirmations_.size() + 1);
  const int message_id = Subscribe(topic, qos, identifier);
  if (message_id < 0) {
    return message_id;
  }
  Waiter waiter(deadline);
  confirmations_.push_back({message_id, &waiter});
  const int result = Await(lock, waiter);
  confirmations_.erase(std::remove_if(confirmations_.begin(), confirmations_.end(),
                                      [&](const Confirmation& one) { return one.waiter == &waiter; }),
                       confirmations_.end());
  return result;
}

int Connection::Unsubscribe(const char* topic) {
  return Sent(mosquitto_unsubscribe(mosquitto_, nullptr, topic));
}

void Connection::Confirm(int message_id, int result) {
  for (const Confirmation& confirmation : confirmations_) {
    if (confirmation.message_id == message_id) {
      confirmation.waiter->Finish(result);
    }
  }
}

// ---- What libmosquitto calls while it reads. It must neither be asked to send
// nor to end the session from here, so that is only noted for Pump.

void Connection::OnConnect(mosquitto*, void* self, int reason, int, const mosquitto_property* properties) {
  auto* connection = static_cast<Connection*>(self);
  connection->had_event_ = true;
  const char* const missing = reason == MQTT_RC_SUCCESS ? MissingFeature(properties) : nullptr;
  if (missing != nullptr) {
    connection->Refuse(-EOPNOTSUPP, "the broker does not offer what the bus needs", missing);
  } else if (reason == MQTT_RC_SUCCESS) {
    connection->restore_ = true;
  } else {
    connection->failure_ = ErrorFromConnectReason(reason);
  }
}

void Connection::OnDisconnect(mosquitto*, void* self, int, const mosquitto_property*) {
  auto* connection = static_cast<Connection*>(self);
  connection->had_event_ = true;
  connection->disconnected_ = true;
}

void Connection::OnSubscribe(mosquitto*, void* self, int message_id, int count, const int* granted,
                             const mosquitto_property*) {
  auto* connection = static_cast<Connection*>(self);
  connection->had_event_ = true;
  const int reason = count > 0 ? granted[0] : MQTT_RC_UNSPECIFIED;
  const int result = reason >= MQTT_RC_UNSPECIFIED ? ErrorFromReason(reason) : 0;
  connection->Confirm(message_id, result);
  if (connection->state_ != State::kHandshake) {
    return;
  }
  if (result < 0 && message_id == connection->last_subscription_) {
    connection->failure_ = result;
  } else if (result < 0) {
    DORV_LOG_LATER(connection->log_, ZERK_LOG_WARNING, "the broker refused to restore a subscription: %s",
                   ErrorText(result));
  } else if (message_id == connection->last_subscription_) {
    connection->restored_ = true;
  }
}

void Connection::OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                           const mosquitto_property* properties) {
  auto* connection = static_cast<Connection*>(self);
  connection->had_event_ = true;
  try {
    connection->owner_->Receive(*message, properties);
  } catch (const std::bad_alloc&) {
    // Replies are kept without memory of ours; one whose identity libmosquitto
    // cannot copy counts as lost.
    DORV_LOG_LATER(connection->log_, ZERK_LOG_WARNING, "a signal or request was dropped: memory ran out");
  }
}

void Connection::OnPublish(mosquitto*, void* self, int message_id, int reason, const mosquitto_property*) {
  auto* connection = static_cast<Connection*>(self);
  connection->had_event_ = true;
  connection->owner_->Acknowledge(message_id, reason);
}

}  // namespace dorv
