// The client's subscriptions and the delivery of signals.
#include <mqtt_protocol.h>

#include <cerrno>
#include <new>
#include <utility>

#include "client.h"
#include "names.h"
#include "sigpipe_guard.h"

using dorv::Clock;

namespace {

dorv::Topic SignalTopic(const std::string& service, const std::string& signal) {
  return signal.empty() ? dorv::Topic::Signals(service) : dorv::Topic::Signal(service, signal);
}

}  // namespace

int bus_client::Subscribe(const char* service, const char* signal, bus_callback callback) {
  const dorv::SigpipeGuard guard;
  const auto deadline = Clock::now() + std::chrono::seconds(BUS_DEFAULT_TIMEOUT);
  const SubscriptionKey key(service, signal);
  callbacks_.Start(shared_from_this());
  std::unique_lock<std::mutex> lock(connection_.mutex());
  if (!session().ready()) {
    return -ENOTCONN;
  }
  auto mine = subscriptions_.find(key);
  if (mine == subscriptions_.end()) {
    mine = subscriptions_.emplace(key, Subscription{++last_identifier_, nullptr, false, 0}).first;
  }
  mine->second.callback = callback;
  if (mine->second.confirmed) {
    return 0;
  }
  const int identifier = mine->second.identifier;
  ++mine->second.waiting;
  const int result = AskForSignals(lock, key, identifier, deadline);
  // Another thread may have unsubscribed meanwhile, and even subscribed anew.
  mine = subscriptions_.find(key);
  if (mine != subscriptions_.end() && mine->second.identifier == identifier) {
    mine->second.confirmed = mine->second.confirmed || result >= 0;
    if (--mine->second.waiting == 0 && !mine->second.confirmed) {
      subscriptions_.erase(mine);
    }
  }
  return result;
}

int bus_client::AskForSignals(std::unique_lock<std::mutex>& lock, const SubscriptionKey& key, int identifier,
                              dorv::TimePoint deadline) {
  try {
    return connection_.SubscribeAndWait(lock, SignalTopic(key.first, key.second).c_str(), 1, identifier,
                                        deadline);
  } catch (const std::bad_alloc&) {  // nothing was sent
    return -ENOMEM;
  }
}

int bus_client::Unsubscribe(const char* service, const char* signal) {
  const dorv::SigpipeGuard guard;
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  const auto entry = subscriptions_.find({service, signal});
  if (entry == subscriptions_.end()) {
    return -ENOENT;
  }
  subscriptions_.erase(entry);
  // Without a connection there is nothing to tell the broker: it has forgotten.
  const int result =
      session().ready() ? session().Unsubscribe(dorv::Topic::Signal(service, signal).c_str()) : 0;
  return result == -ENOTCONN ? 0 : result;
}

int bus_client::RestoreSubscriptions() {
  for (const auto& [key, subscription] : subscriptions_) {
    const int result =
        session().Subscribe(SignalTopic(key.first, key.second).c_str(), 1, subscription.identifier);
    if (result < 0) {
      return result;
    }
  }
  for (auto& [service, watch] : services_) {
    watch.watched = WatchPresence(service) >= 0;
  }
  return session().Subscribe(dorv::Topic::Reply(session().client_id()).c_str(), 0, 0);
}

int bus_client::SubscriptionsRestored() {
  session().DeclareReady();
  return 0;
}

// A signal is news: one that the broker has kept tells of something that is over.
// The broker may send a signal once for each matching subscription or once with
// the identifiers of all; each callback is called once either way.
void bus_client::ReceiveSignal(const mosquitto_message& message, const mosquitto_property* properties) {
  const std::string_view signal = dorv::SignalOf(message.topic);
  if (signal.empty() || message.retain) {
    return;
  }
  std::uint32_t identifier = 0;
  const mosquitto_property* one =
      mosquitto_property_read_varint(properties, MQTT_PROP_SUBSCRIPTION_IDENTIFIER, &identifier, false);
  while (one != nullptr) {
    Deliver(static_cast<int>(identifier), signal, message);
    one = mosquitto_property_read_varint(one, MQTT_PROP_SUBSCRIPTION_IDENTIFIER, &identifier, true);
  }
}

void bus_client::Deliver(int identifier, std::string_view signal, const mosquitto_message& message) {
  std::string bytes(static_cast<const char*>(message.payload), static_cast<std::size_t>(message.payloadlen));
  const bool taken = callbacks_.Offer([this, identifier, name = std::string(signal), bytes = std::move(bytes)] {
    bus_callback callback = nullptr;
    if (FindCallback(identifier, &callback)) {
      callback(this, nullptr, name.c_str(), bytes.empty() ? nullptr : bytes.data(),
               static_cast<std::int32_t>(bytes.size()));
    }
  });
  if (!taken) {
    DORV_LOG_LATER(connection_.log(), ZERK_LOG_ERROR,
                   "a signal was dropped: the application's callbacks do not keep up");
  }
}

// Whether a subscription still holds at the moment of delivery.
bool bus_client::FindCallback(int identifier, bus_callback* callback) {
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  for (const auto& [key, subscription] : subscriptions_) {
    if (subscription.identifier == identifier) {
      *callback = subscription.callback;
      return true;
    }
  }
  return false;
}
