#include "session.h"

#include <pthread.h>

#include <csignal>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "interpreter.h"

namespace vptz_python {
namespace {

// The process's VptzClients. One that is destroyed closes the database for all,
// so those that are no longer used stay until the last one goes, or until one is
// made, which opens the database anew. Never destroyed.
struct Clients {
  std::mutex mutex;
  int generation = ForkGeneration();
  std::size_t used = 0;
  std::vector<std::unique_ptr<VptzClient>> unused;
};

Clients& AllClients() {
  static auto& clients = *new Clients;
  return clients;
}

// The parent's clients are not to be touched by its child.
void LeaveToParent(Clients& all) {
  if (std::exchange(all.generation, ForkGeneration()) == ForkGeneration()) return;
  all.used = 0;
  for (std::unique_ptr<VptzClient>& client : all.unused) static_cast<void>(client.release());
}

std::unique_ptr<VptzClient> MakeClient() {
  Clients& all = AllClients();
  const std::lock_guard<std::mutex> lock(all.mutex);
  LeaveToParent(all);
  all.unused.clear();
  auto client = std::make_unique<VptzClient>();
  ++all.used;
  return client;
}

void Retire(std::unique_ptr<VptzClient> client) {
  Clients& all = AllClients();
  const std::lock_guard<std::mutex> lock(all.mutex);
  all.unused.push_back(std::move(client));
  if (--all.used == 0) all.unused.clear();
}

// Holds off every signal from the threads that are started meanwhile: handlers
// run on the application's own.
class SignalsOff {
 public:
  SignalsOff() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsOff() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsOff(const SignalsOff&) = delete;
  SignalsOff& operator=(const SignalsOff&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

std::shared_ptr<Session> Session::Make(std::shared_ptr<Monitor> monitor) {
  return std::shared_ptr<Session>(new Session(std::move(monitor)));
}

Session::Session(std::shared_ptr<Monitor> monitor) : monitor_(std::move(monitor)), client_(MakeClient()) {}

Session::~Session() {
  if (connected_) client_->Disconnect();
  Retire(std::move(client_));
}

void Session::Disconnect() {
  if (has_bus_client_ && connected_) client_->Disconnect();
  connected_ = false;
}

void Session::Abandon(const Task& task) {
  if (task.done) return;
  awaited_ = false;
  abandoned_ = true;
  Disconnect();
}

void Session::Execute(Task& task) {
  try {
    const bool goes_on = Prepare();
    task.reachable = reachable_;
    if (goes_on) task.Run(*client_);
  } catch (...) {
    task.failure = std::current_exception();
  }
  Finish(task);
}

// Connects when the application wants that and it is not done yet. False when
// the call has been abandoned meanwhile.
bool Session::Prepare() {
  std::unique_lock<std::mutex> lock(monitor_->mutex);
  if (abandoned_ || connected_ || !monitor_->target) return !abandoned_;
  const Target target = *monitor_->target;
  const std::uint64_t epoch = monitor_->epoch;
  connected_ = true;
  lock.unlock();
  reachable_ = client_->Connect(target.name, target.address ? target.address->c_str() : nullptr) == 0;
  lock.lock();
  const bool could_be_ended = std::exchange(has_bus_client_, true);
  if (abandoned_ || epoch != monitor_->epoch) {
    // Somebody ended the connection, perhaps before it was there.
    connected_ = reachable_ || !could_be_ended;
    Disconnect();
  }
  return !abandoned_;
}

void Session::Finish(Task& task) {
  std::unique_lock<std::mutex> lock(monitor_->mutex);
  task.done = true;
  if (std::exchange(abandoned_, false)) {
    lock.unlock();
    ConnectAgain();
    lock.lock();
  }
  busy_ = awaited_ = false;
  lock.unlock();
  monitor_->changed.notify_all();
}

// So that signals arrive again, and the next call finds a connection.
void Session::ConnectAgain() {
  try {
    Prepare();
  } catch (const std::bad_alloc&) {
    // The next call tries it too, and tells its caller.
  }
}

void Session::Start(std::shared_ptr<Task> task) {
  {
    const std::lock_guard<std::mutex> lock(monitor_->mutex);
    task_ = std::move(task);
  }
  if (has_thread_) return work_.notify_one();
  const SignalsOff quiet_thread;
  std::thread([self = shared_from_this()] { self->Work(); }).detach();
  has_thread_ = true;
}

void Session::Work() {
  std::unique_lock<std::mutex> lock(monitor_->mutex);
  for (;;) {
    work_.wait(lock, [this] { return task_ != nullptr || quit_; });
    const std::shared_ptr<Task> task = std::exchange(task_, nullptr);
    if (task == nullptr) return;
    lock.unlock();
    Execute(*task);
    lock.lock();
  }
}

void Session::Quit() {
  {
    const std::lock_guard<std::mutex> lock(monitor_->mutex);
    quit_ = true;
  }
  work_.notify_one();
}

}  // namespace vptz_python
