// How a session begins, is read, written to and ended. What libmosquitto calls
// meanwhile is in session_events.cc.
#include "session.h"

#include <fcntl.h>
#include <mqtt_protocol.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "dial.h"
#include "errors.h"
#include "mosquitto_library.h"
#include "sigpipe_guard.h"

namespace dorv {
namespace {

constexpr int kKeepAliveSeconds = 5;
constexpr std::chrono::seconds kKeepAliveInterval{1};
constexpr std::chrono::seconds kShortestHandshake{5};  // that a session is given to begin

int PortOf(const Target& target) {
  if (target.address.is_unix || target.address.port != 0) {
    return target.address.port;
  }
  return target.settings.tls ? 8883 : 1883;
}

const char* TextOrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

int SetCredentials(mosquitto* instance, const ConnectSettings& settings) {
  const bool done = settings.user.empty() ||
                    mosquitto_username_pw_set(instance, settings.user.c_str(), TextOrNull(settings.password)) ==
                        MOSQ_ERR_SUCCESS;
  return done ? 0 : -ENOMEM;
}

int UseTls(mosquitto* instance, const ConnectSettings& settings) {
  const char* system_certificates = settings.ca_file.empty() ? "/etc/ssl/certs" : nullptr;
  const int result = mosquitto_tls_set(instance, TextOrNull(settings.ca_file), system_certificates,
                                       TextOrNull(settings.certificate), TextOrNull(settings.key), nullptr);
  return result == MOSQ_ERR_SUCCESS ? 0 : -EKEYREJECTED;
}

}  // namespace

Session::Session(User* user, Keeper* keeper, SharedSocket& socket, const Trouble& trouble, LogWriter& log,
                 std::string client_id)
    : user_(user),
      keeper_(keeper),
      socket_(socket),
      trouble_(trouble),
      log_(log),
      client_id_(std::move(client_id)),
      mosquitto_(NewMosquitto(client_id_.c_str(), this)) {}

Session::~Session() {
  if (mosquitto_ != nullptr) {
    mosquitto_destroy(mosquitto_);
  }
}

int Session::Prepare(const std::shared_ptr<const Target>& target) {
  target_ = target;
  if (mosquitto_reinitialise(mosquitto_, client_id_.c_str(), true, this) != MOSQ_ERR_SUCCESS) {
    return -ENOMEM;
  }
  const bool is_unix = target->address.is_unix;
  mosquitto_int_option(mosquitto_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
  mosquitto_int_option(mosquitto_, MOSQ_OPT_SEND_MAXIMUM, 65535);
  mosquitto_int_option(mosquitto_, MOSQ_OPT_TCP_NODELAY, is_unix ? 0 : 1);
  mosquitto_connect_v5_callback_set(mosquitto_, OnConnect);
  mosquitto_disconnect_v5_callback_set(mosquitto_, OnDisconnect);
  mosquitto_subscribe_v5_callback_set(mosquitto_, OnSubscribe);
  mosquitto_message_v5_callback_set(mosquitto_, OnMessage);
  mosquitto_publish_v5_callback_set(mosquitto_, OnPublish);
  int result = SetCredentials(mosquitto_, target->settings);
  if (result == 0) {
    result = user_->SetWill(mosquitto_);
  }
  return result == 0 && target->settings.tls && !is_unix ? UseTls(mosquitto_, target->settings) : result;
}

int Session::Dial(const Target& target) {
  return ConnectInstance(mosquitto_, target.address, PortOf(target), kKeepAliveSeconds,
                         target.settings.connect_timeout, socket_.background_wake());
}

void Session::Begin() {
  state_ = State::kHandshake;
  noted_ = Noted();
  const TimePoint now = Clock::now();
  handshake_deadline_ = now + std::max(kShortestHandshake, target_->settings.connect_timeout);
  keep_alive_at_ = now + kKeepAliveInterval;
  fcntl(descriptor(), F_SETFD, FD_CLOEXEC);  // programs that the application runs get none of it
  socket_.Open();
}

void Session::Discard() { mosquitto_reinitialise(mosquitto_, client_id_.c_str(), true, this); }

void Session::End() {
  if (!open()) {
    return;
  }
  // With the will, so that callers learn at once that a service is gone.
  mosquitto_disconnect_v5(mosquitto_, MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
  LetGo();
}

void Session::Fail(int error) {
  if (!open()) {
    return;
  }
  LetGo();
  keeper_->SessionFailed(error);
}

// Leaves without a session, and tells everyone who waits for something of it.
void Session::LetGo() {
  SigpipeGuard::NoteBrokenPipe();
  state_ = State::kNone;
  ++number_;
  socket_.Close();
  // Closes the socket and throws away what is still queued: nothing is sent late.
  Discard();
  confirmations_.FinishAll(-ECONNRESET);
  user_->SessionEnded();
}

void Session::DeclareReady() {
  state_ = State::kReady;
  socket_.AdmitCallers();
  keeper_->SessionReady();
}

void Session::Refuse(int error, const char* what, const char* of_what) {
  noted_.failure = error;
  if (trouble_.IsNew(error, Clock::now())) {
    DORV_LOG_LATER(log_, ZERK_LOG_ERROR, "%s: %s", what, of_what);
  }
}

// Turns libmosquitto's result for something that was to be sent into 0, or a
// negative errno value when nothing was sent.
int Session::ResultOfSending(int result) {
  if (result == MOSQ_ERR_SUCCESS) {
    socket_.KeepWriting();
    return 0;
  }
  const int error = ErrorFromMosquitto(result);
  if (error == -EMSGSIZE || error == -ENOMEM || error == -EINVAL) {
    return error;
  }
  Fail(-ECONNRESET);
  return -ENOTCONN;
}

int Session::Publish(int* message_id, const char* topic, const void* payload, int length, int qos, bool retain,
                     const mosquitto_property* properties) {
  return ResultOfSending(
      mosquitto_publish_v5(mosquitto_, message_id, topic, length, payload, qos, retain, properties));
}

int Session::Subscribe(const char* topic, int qos, int identifier, Kept kept) {
  mosquitto_property* properties = nullptr;
  if (identifier > 0 &&
      mosquitto_property_add_varint(&properties, MQTT_PROP_SUBSCRIPTION_IDENTIFIER,
                                    static_cast<std::uint32_t>(identifier)) != MOSQ_ERR_SUCCESS) {
    return -ENOMEM;
  }
  const int options = kept == Kept::kLast ? MQTT_SUB_OPT_SEND_RETAIN_ALWAYS : MQTT_SUB_OPT_SEND_RETAIN_NEVER;
  int message_id = 0;
  const int result =
      ResultOfSending(mosquitto_subscribe_v5(mosquitto_, &message_id, topic, qos, options, properties));
  mosquitto_property_free_all(&properties);
  return result < 0 ? result : message_id;
}

int Session::Unsubscribe(const char* topic) {
  return ResultOfSending(mosquitto_unsubscribe(mosquitto_, nullptr, topic));
}

TimePoint Session::next_duty() const {
  switch (state_) {
    case State::kHandshake:
      return std::min(keep_alive_at_, handshake_deadline_);
    case State::kReady:
      return keep_alive_at_;
    default:
      return TimePoint::max();
  }
}

void Session::KeepAlive(TimePoint now) {
  if (!open() || now < keep_alive_at_) {
    return;
  }
  keep_alive_at_ = now + kKeepAliveInterval;
  if (state_ == State::kHandshake && now >= handshake_deadline_) {
    Fail(-ETIMEDOUT);
    return;
  }
  const int result = mosquitto_loop_misc(mosquitto_);
  if (result != MOSQ_ERR_SUCCESS) {
    Fail(ErrorFromMosquitto(result));
  }
}

void Session::ReadAndWrite() {
  int result = Read();
  Proceed();
  if (result == MOSQ_ERR_SUCCESS && noted_.failure == 0 && WantsToWrite()) {
    result = mosquitto_loop_write(mosquitto_, 1);
  }
  if (noted_.failure != 0) {
    Fail(noted_.failure);
  } else if (result != MOSQ_ERR_SUCCESS) {
    Fail(ErrorFromMosquitto(result));
  } else if (noted_.ended) {
    Fail(-ECONNRESET);
  }
}

// Behind TLS a read may leave whole packets where poll cannot see them. One quiet
// read may have been a keep-alive, two mean that nothing is left.
int Session::Read() {
  int result = mosquitto_loop_read(mosquitto_, 1);
  for (int quiet = 0; target_->settings.tls && quiet < 2 && result == MOSQ_ERR_SUCCESS && noted_.failure == 0;
       ++quiet) {
    noted_.any = false;
    result = mosquitto_loop_read(mosquitto_, 1);
    quiet = noted_.any ? -1 : quiet;
  }
  return result;
}

// Takes the next step of a session that begins.
void Session::Proceed() {
  if (noted_.begun && noted_.failure == 0) {
    noted_.begun = false;
    last_subscription_ = user_->RestoreSubscriptions();
    noted_.failure = std::min(last_subscription_, 0);
  }
  if (noted_.subscribed && noted_.failure == 0) {
    noted_.subscribed = false;
    noted_.failure = user_->SubscriptionsRestored();
  }
}

}  // namespace dorv
