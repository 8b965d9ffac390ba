#include "service.h"

#include <mqtt_protocol.h>

#include <cerrno>
#include <utility>

#include "errors.h"
#include "mosquitto_library.h"
#include "names.h"
#include "properties.h"
#include "random.h"
#include "sigpipe_guard.h"

using dorv::TimePoint;
using dorv::Topic;

bus_service::bus_service(const char* name, bus_method_handler handler, void* user_data)
    : name_(name),
      instance_(std::to_string(dorv::RandomNumber())),
      handler_(handler),
      user_data_(user_data),
      connection_(this, dorv::MakeClientId(name)) {}

bus_service::~bus_service() { dorv::ReleaseLibrary(); }

int bus_service::Begin(const char* address) {
  const int result = connection_.Connect(address, shared_from_this());
  if (result < 0) {
    Free();
    return result;
  }
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  if (!freed_) {
    self_ = shared_from_this();
  }
  return result;
}

int bus_service::Free() {
  if (connection_.OnBackgroundThread()) {
    return -EDEADLK;
  }
  std::unique_lock<std::mutex> lock(connection_.mutex());
  freed_ = true;
  lock.unlock();
  connection_.Close();
  lock.lock();
  idle_.wait(lock, [this] { return !serving_; });
  requests_.clear();
  self_.reset();
  return 0;
}

// The broker clears the presence when the service is gone without a word.
int bus_service::SetWill(mosquitto* instance) {
  const int result =
      mosquitto_will_set_v5(instance, Topic::Presence(name_).c_str(), 0, nullptr, 1, true, nullptr);
  return result == MOSQ_ERR_SUCCESS ? 0 : -ENOMEM;
}

int bus_service::RestoreSubscriptions() {
  const int watched = session().Subscribe(Topic::Presence(name_).c_str(), 0, 0, dorv::Session::Kept::kLast);
  return watched < 0 ? watched : session().Subscribe(Topic::Calls(name_).c_str(), 0, 0);
}

// Announces itself when requests reach it: none is lost that a caller sends to a
// service that is present.
int bus_service::SubscriptionsRestored() { return Announce(); }

int bus_service::Announce() {
  const int result = session().Publish(&announcement_, Topic::Presence(name_).c_str(), instance_.data(),
                                       static_cast<int>(instance_.size()), 1, true, nullptr);
  if (result < 0) {
    announcement_ = 0;
    DORV_LOG_LATER(connection_.log(), ZERK_LOG_WARNING, "cannot announce the service %s: %s", name_.c_str(),
                   dorv::ErrorText(result));
  }
  return result;
}

// The broker has taken the presence: it, and every client, gets what comes from
// now on after that.
void bus_service::PublicationConfirmed(int message_id, int reason) {
  if (message_id != announcement_) {
    return;
  }
  announcement_ = 0;
  if (reason >= MQTT_RC_UNSPECIFIED) {
    session().Refuse(dorv::ErrorFromReason(reason), "the broker does not let the service announce itself",
                     name_.c_str());
    return;
  }
  present_ = true;
  if (!session().ready()) {
    session().DeclareReady();
  }
}

void bus_service::SessionEnded() {
  announcement_ = 0;
  present_ = false;
  announce_again_ = false;
}

void bus_service::Receive(const mosquitto_message& message, const mosquitto_property* properties) {
  if (dorv::PresenceOf(message.topic).empty()) {
    // The caller of a request that the broker has kept waits no longer.
    if (!message.retain) {
      ReceiveRequest(message, properties);
    }
  } else {
    ReceivePresence(message);
  }
}

// The will of an earlier service of this name may come late and clear the
// presence that this one has announced. Callers take this one for gone then,
// until it has announced itself anew.
void bus_service::ReceivePresence(const mosquitto_message& message) {
  const std::string_view present(static_cast<const char*>(message.payload),
                                 static_cast<std::size_t>(message.payloadlen));
  if (present.empty()) {
    present_ = false;
    // An announcement that is under way comes after what has cleared the last.
    announce_again_ = session().ready() && announcement_ == 0;
  } else if (present != instance_ && session().ready()) {
    DORV_LOG_LATER(connection_.log(), ZERK_LOG_ERROR, "somebody else serves the name %s as well",
                   name_.c_str());
  }
}

void bus_service::ReceiveRequest(const mosquitto_message& message, const mosquitto_property* properties) {
  auto request = std::make_unique<bus_request>();
  request->method = dorv::MethodOf(message.topic, name_);
  request->reply_topic = dorv::ReadResponseTopic(properties);
  const auto identity = dorv::ReadIdentity(properties);
  // A reply goes to reply topics only: a request must not make the service
  // publish anywhere else.
  if (!identity || identity->IsTooFar() || !dorv::IsName(request->method.c_str()) ||
      !dorv::IsReplyTopic(request->reply_topic)) {
    DORV_LOG_LATER(connection_.log(), ZERK_LOG_NOTICE, "a malformed request was dropped");
    return;
  }
  if (identity->Expired() || !seen_.Insert(*identity)) {
    DORV_LOG_LATER(connection_.log(), ZERK_LOG_NOTICE, "a late or repeated request was dropped: %s",
                   request->method.c_str());
    return;
  }
  if (!present_) {
    DORV_LOG_LATER(connection_.log(), ZERK_LOG_NOTICE,
                   "a request from before the service's presence was dropped: %s", request->method.c_str());
    return;
  }
  request->identity = *identity;
  request->session = session().number();
  request->payload.assign(static_cast<const char*>(message.payload),
                          static_cast<std::size_t>(message.payloadlen));
  requests_.push_back(std::move(request));
}

TimePoint bus_service::EndOverdueCalls(TimePoint) { return TimePoint::max(); }

void bus_service::HandleRequests() {
  std::unique_lock<std::mutex> lock(connection_.mutex());
  if (announce_again_ && session().ready()) {
    announce_again_ = Announce() < 0 && session().ready();
  }
  serving_ = true;
  while (!requests_.empty() && !freed_) {
    Request request = std::move(requests_.front());
    requests_.pop_front();
    lock.unlock();
    Handle(std::move(request));
    lock.lock();
  }
  serving_ = false;
  idle_.notify_all();
}

void bus_service::Handle(Request request) {
  // An earlier request may have taken long.
  if (request->identity.Expired()) {
    return;
  }
  request->service = shared_from_this();
  if (request->method == dorv::kPingMethod) {
    Reply(*request, nullptr, 0, 0);
  } else {
    handler_(this, request.release(), user_data_);
  }
}

int bus_service::Emit(const char* signal, const void* payload, int length) {
  const dorv::SigpipeGuard guard;
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  if (!session().ready()) {
    return -ENOTCONN;
  }
  return session().Publish(nullptr, Topic::Signal(name_, signal).c_str(), payload, length, 1, false, nullptr);
}

int bus_service::Reply(const bus_request& request, const void* reply, int length, int error) {
  const dorv::SigpipeGuard guard;
  const std::lock_guard<std::mutex> lock(connection_.mutex());
  if (!session().ready() || session().number() != request.session) {
    return -ENOTCONN;
  }
  if (request.identity.Expired()) {
    return -ETIMEDOUT;
  }
  dorv::Properties properties;
  if (!properties.AddCorrelation(request.identity.Encode()) || (error < 0 && !properties.AddError(error))) {
    return -ENOMEM;
  }
  const char* topic = request.reply_topic.c_str();
  const int result = session().Publish(nullptr, topic, reply, length, 0, false, properties.get());
  if (result == -EMSGSIZE && properties.AddError(-EMSGSIZE)) {
    session().Publish(nullptr, topic, nullptr, 0, 0, false, properties.get());
  }
  return result;
}
