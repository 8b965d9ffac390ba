// The connection's background thread: connects, reads while nobody drives,
// keeps the session alive and minds the deadlines.
#include <fcntl.h>
#include <mqtt_protocol.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "connection.h"
#include "dial.h"
#include "errors.h"
#include "log.h"

namespace dorv {
namespace {

thread_local const Connection* background_of = nullptr;

constexpr int kKeepAliveSeconds = 5;
constexpr std::chrono::seconds kMiscInterval{1};
constexpr std::chrono::seconds kShortestHandshake{5};  // that a session is given to begin

int PortOf(const Address& address, const Settings& settings) {
  if (address.is_unix || address.port != 0) {
    return address.port;
  }
  return settings.tls ? 8883 : 1883;
}

const char* TextOrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

int UseTls(mosquitto* instance, const Settings& settings) {
  const char* system_certificates = settings.ca_file.empty() ? "/etc/ssl/certs" : nullptr;
  const int result = mosquitto_tls_set(instance, TextOrNull(settings.ca_file), system_certificates,
                                       TextOrNull(settings.certificate), TextOrNull(settings.key), nullptr);
  return result == MOSQ_ERR_SUCCESS ? 0 : -EKEYREJECTED;
}

}  // namespace

bool Connection::OnBackgroundThread() const { return background_of == this; }

void Connection::Run() {
  background_of = this;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!closing_) {
    ForgetOldSocket();
    if (state_ == State::kRetry && Clock::now() >= retry_at_) {
      Dial(lock);
    } else {
      Turn(lock);
    }
  }
  running_ = false;
  thread_ended_.notify_all();
}

// A socket that is closed leaves the epoll by itself, unless a child made by
// fork() has a copy: then it would be reported ready for ever.
void Connection::ForgetOldSocket() {
  if (polled_session_ == session_ || HasSocket()) {
    return;
  }
  const int fresh = NewEpoll(wake_background_);
  if (fresh >= 0) {
    close(epoll_);
    epoll_ = fresh;
    polled_session_ = session_;
  }
}

// One round: sleep until something is to be done, then do it.
void Connection::Turn(std::unique_lock<std::mutex>& lock) {
  TimePoint until = owner_->Tick(Clock::now());
  if (state_ == State::kRetry) {
    until = std::min(until, retry_at_);
  } else if (HasSocket()) {
    until = std::min(until, misc_at_);
  }
  if (state_ == State::kHandshake) {
    until = std::min(until, handshake_deadline_);
  }
  bool socket_ready = false;
  Sleep(lock, until, &socket_ready);

  if (!driven_ && HasSocket()) {
    if (socket_ready) {
      Pump();
    }
    Misc(Clock::now());
    lock.unlock();
    owner_->Serve();
    lock.lock();
    if (!driven_ && HasSocket()) {
      Arm();
    }
  } else {
    Misc(Clock::now());
  }
}

void Connection::Sleep(std::unique_lock<std::mutex>& lock, TimePoint until, bool* socket_ready) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
  const auto timeout = std::clamp(left, milliseconds(0), milliseconds(60000));
  lock.unlock();
  epoll_event events[2];
  const int count = epoll_wait(epoll_, events, 2, static_cast<int>(timeout.count()));
  lock.lock();
  for (int i = 0; i < count; ++i) {
    if (events[i].data.fd == wake_background_.descriptor()) {
      wake_background_.Clear();
    } else {
      *socket_ready = true;
    }
  }
}

void Connection::Misc(TimePoint now) {
  if (!HasSocket() || now < misc_at_) {
    return;
  }
  misc_at_ = now + kMiscInterval;
  if (state_ == State::kHandshake && now >= handshake_deadline_) {
    Fail(-ETIMEDOUT);
    return;
  }
  const int result = mosquitto_loop_misc(mosquitto_);
  if (result != MOSQ_ERR_SUCCESS) {
    Fail(ErrorFromMosquitto(result));
  }
}

// A fresh instance with everything that a connection needs.
int Connection::PrepareInstance() {
  const Settings& settings = target_->settings;
  if (mosquitto_reinitialise(mosquitto_, client_id_.c_str(), true, this) != MOSQ_ERR_SUCCESS) {
    return -ENOMEM;
  }
  mosquitto_int_option(mosquitto_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
  mosquitto_int_option(mosquitto_, MOSQ_OPT_SEND_MAXIMUM, 65535);
  mosquitto_int_option(mosquitto_, MOSQ_OPT_TCP_NODELAY, target_->address.is_unix ? 0 : 1);
  mosquitto_connect_v5_callback_set(mosquitto_, OnConnect);
  mosquitto_disconnect_v5_callback_set(mosquitto_, OnDisconnect);
  mosquitto_subscribe_v5_callback_set(mosquitto_, OnSubscribe);
  mosquitto_message_v5_callback_set(mosquitto_, OnMessage);
  mosquitto_publish_v5_callback_set(mosquitto_, OnPublish);
  if (!settings.user.empty() && mosquitto_username_pw_set(mosquitto_, settings.user.c_str(),
                                                          TextOrNull(settings.password)) != MOSQ_ERR_SUCCESS) {
    return -ENOMEM;
  }
  const int prepared = owner_->Prepare(mosquitto_);
  if (prepared < 0) {
    return prepared;
  }
  return settings.tls && !target_->address.is_unix ? UseTls(mosquitto_, settings) : 0;
}

// One attempt to reach the broker. The mutex is free meanwhile: host names and
// sockets may take their time, and nobody else touches the instance in this
// state.
void Connection::Dial(std::unique_lock<std::mutex>& lock) {
  const std::uint64_t attempt = attempt_;
  const std::shared_ptr<const Target> target = target_;
  const Address& address = target->address;
  const int port = PortOf(address, target->settings);
  int error = PrepareInstance();
  state_ = State::kDialing;
  lock.unlock();
  if (error == 0) {
    error = ConnectInstance(mosquitto_, address, port, kKeepAliveSeconds, target->settings.connect_timeout,
                            wake_background_);
  }
  lock.lock();
  if (attempt != attempt_ || closing_) {
    // Somebody changed his mind meanwhile; a socket that was opened is closed.
    mosquitto_reinitialise(mosquitto_, client_id_.c_str(), true, this);
    return;
  }
  const TimePoint now = Clock::now();
  if (error == -ECANCELED) {
    wake_background_.Clear();
    state_ = State::kRetry;
    return;
  }
  // From here on Fail knows what to do.
  state_ = State::kHandshake;
  failure_ = 0;
  disconnected_ = false;
  restore_ = false;
  restored_ = false;
  if (error != 0) {
    Fail(error);
    return;
  }
  handshake_deadline_ = now + std::max(kShortestHandshake, target->settings.connect_timeout);
  misc_at_ = now + kMiscInterval;
  epoll_event interest{};
  interest.data.fd = mosquitto_socket(mosquitto_);
  fcntl(interest.data.fd, F_SETFD, FD_CLOEXEC);  // programs that the application runs get none of it
  epoll_ctl(epoll_, EPOLL_CTL_ADD, interest.data.fd, &interest);
  interest_ = 0;
  if (driven_) {
    // A driver of the session before has not left yet; it arms when it does.
    return;
  }
  Arm();
}

}  // namespace dorv
