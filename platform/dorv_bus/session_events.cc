// What libmosquitto calls while the session reads. It must neither be asked to
// send nor to end the session from here, so that is only noted.
#include <mqtt_protocol.h>

#include <new>

#include "errors.h"
#include "properties.h"
#include "session.h"

namespace dorv {

void Session::OnConnect(mosquitto*, void* self, int reason, int, const mosquitto_property* properties) {
  auto* session = static_cast<Session*>(self);
  session->noted_.any = true;
  const char* const missing = reason == MQTT_RC_SUCCESS ? MissingFeature(properties) : nullptr;
  if (missing != nullptr) {
    session->Refuse(-EOPNOTSUPP, "the broker does not offer what the bus needs", missing);
  } else if (reason == MQTT_RC_SUCCESS) {
    session->noted_.begun = true;
  } else {
    session->noted_.failure = ErrorFromConnectReason(reason);
  }
}

void Session::OnDisconnect(mosquitto*, void* self, int, const mosquitto_property*) {
  auto* session = static_cast<Session*>(self);
  session->noted_.any = true;
  session->noted_.ended = true;
}

void Session::OnSubscribe(mosquitto*, void* self, int message_id, int count, const int* granted,
                          const mosquitto_property*) {
  auto* session = static_cast<Session*>(self);
  session->noted_.any = true;
  const int reason = count > 0 ? granted[0] : MQTT_RC_UNSPECIFIED;
  const int result = reason >= MQTT_RC_UNSPECIFIED ? ErrorFromReason(reason) : 0;
  session->confirmations_.Finish(message_id, result);
  if (session->state_ == State::kHandshake) {
    session->Subscribed(message_id, result);
  }
}

// The broker has answered one of the subscriptions that are restored.
void Session::Subscribed(int message_id, int result) {
  if (message_id == last_subscription_) {
    noted_.failure = result < 0 ? result : noted_.failure;
    noted_.subscribed = result >= 0;
  } else if (result < 0) {
    DORV_LOG_LATER(log_, ZERK_LOG_WARNING, "the broker refused to restore a subscription: %s",
                   ErrorText(result));
  }
}

void Session::OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                        const mosquitto_property* properties) {
  auto* session = static_cast<Session*>(self);
  session->noted_.any = true;
  try {
    session->user_->Receive(*message, properties);
  } catch (const std::bad_alloc&) {
    // Replies are kept without memory of ours; one whose identity libmosquitto
    // cannot copy counts as lost.
    DORV_LOG_LATER(session->log_, ZERK_LOG_WARNING, "a signal or request was dropped: memory ran out");
  }
}

void Session::OnPublish(mosquitto*, void* self, int message_id, int reason, const mosquitto_property*) {
  auto* session = static_cast<Session*>(self);
  session->noted_.any = true;
  session->user_->PublicationConfirmed(message_id, reason);
}

}  // namespace dorv
