// What the application asks of the connection. The background thread is in
// background.cc.
#include "connection.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "quiet_thread.h"
#include "sigpipe_guard.h"

namespace dorv {
namespace {

// Null when the address or the settings cannot be read.
std::shared_ptr<const Target> LoadTarget(const char* address) {
  auto parsed = Address::Parse(address);
  if (!parsed) {
    return nullptr;
  }
  auto settings = ConnectSettings::Load();
  if (!settings) {
    return nullptr;
  }
  std::string text = parsed->Text();
  return std::make_shared<Target>(Target{std::move(*parsed), std::move(*settings), std::move(text)});
}

}  // namespace

Connection::Connection(Owner* owner, std::string client_id)
    : owner_(owner), socket_(&session_), session_(owner, this, socket_, trouble_, log_, std::move(client_id)) {}

int Connection::Connect(const char* address, std::shared_ptr<void> keep) {
  auto target = LoadTarget(address);
  if (target == nullptr) {
    return -EINVAL;
  }
  std::unique_lock<std::mutex> lock(mutex_);
  if (closing_) {
    return -ENOTCONN;
  }
  // What may fail comes before anything is changed.
  connecting_.Reserve();
  StartBackgroundThread(std::move(keep));
  return ConnectTo(lock, std::move(target));
}

void Connection::StartBackgroundThread(std::shared_ptr<void> keep) {
  if (!running_) {
    thread_ = StartQuietThread([this, keep = std::move(keep)] { Run(); });
    running_ = true;
  }
}

int Connection::ConnectTo(std::unique_lock<std::mutex>& lock, std::shared_ptr<const Target> target) {
  const SigpipeGuard guard;
  Leave();
  target_ = std::move(target);
  trouble_ = Trouble();
  wanted_ = true;
  retry_at_ = Clock::now();

  Waiter waiter(Clock::now() + target_->settings.connect_timeout);
  connecting_.Add(kConnected, &waiter);
  const int result = socket_.Await(lock, waiter);
  connecting_.Remove(waiter);
  if (result < 0) {
    // A caller that sees the failure finds its reason in the log, unless the log is
    // stuck or the caller's time is over.
    lock.unlock();
    log_.Wait(std::min(waiter.deadline, Clock::now() + std::chrono::milliseconds(100)));
    lock.lock();
  }
  return result;
}

int Connection::Disconnect() {
  const SigpipeGuard guard;
  const std::lock_guard<std::mutex> lock(mutex_);
  return Leave();
}

int Connection::Leave() {
  const bool was_wanted = std::exchange(wanted_, false);
  ++attempt_;
  session_.End();
  connecting_.FinishAll(-ECONNRESET);
  socket_.WakeBackground();
  return was_wanted ? 0 : -ENOTCONN;
}

int Connection::SubscribeAndWait(std::unique_lock<std::mutex>& lock, const char* topic, int qos, int identifier,
                                 TimePoint deadline) {
  EventWaiters& confirmations = session_.confirmations();
  confirmations.Reserve();
  const int message_id = session_.Subscribe(topic, qos, identifier);
  if (message_id < 0) {
    return message_id;
  }
  Waiter waiter(deadline);
  confirmations.Add(message_id, &waiter);
  const int result = socket_.Await(lock, waiter);
  confirmations.Remove(waiter);
  return result;
}

void Connection::Close() {
  const SigpipeGuard guard;
  std::unique_lock<std::mutex> lock(mutex_);
  closing_ = true;
  Leave();
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

void Connection::SessionReady() {
  trouble_.ReportEnd(target_->text, log_);
  connecting_.FinishAll(0);
}

void Connection::SessionFailed(int error) {
  const TimePoint now = Clock::now();
  // A password that was wrong once is wrong a second later too.
  const bool refused = error == -EKEYREJECTED || error == -EACCES || error == -EOPNOTSUPP;
  retry_at_ = now + std::chrono::seconds(refused ? 10 : 1);
  trouble_.Report(error, target_->text, now, log_);
  connecting_.FinishAll(error);
  socket_.WakeBackground();
}

}  // namespace dorv
