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

// The process's VptzClients. One that is destroyed closes the database for all, until
// one is made. So those that are no longer used stay until the last one goes, or until
// one is made while no call is under way; calls that begin meanwhile wait.
struct Clients {
  std::mutex mutex;
  std::size_t used = 0;
  std::size_t calls = 0;  // under way
  std::vector<std::unique_ptr<VptzClient>> unused;
};

// Never destroyed, and not made on first use: a fork could find that half done.
Clients& all_clients = *new Clients;

// Held while a client is made or destroyed, and during a fork: its child would wait for
// ever for locks, SQLite's for instance, that another thread had taken meanwhile. The
// thread that forks may make clients in its own hooks.
std::recursive_mutex& coming_and_going = *new std::recursive_mutex;

// The parent's clients are not to be touched by its child.
void ForgetInChild() {
  new (&all_clients) Clients;
  new (&coming_and_going) std::recursive_mutex;
}

std::unique_ptr<VptzClient> MakeClient() {
  const std::lock_guard<std::recursive_mutex> alone(coming_and_going);
  std::unique_lock<std::mutex> lock(all_clients.mutex);
  const bool nobody_looks_up = all_clients.calls == 0;
  if (nobody_looks_up) {
    all_clients.unused.clear();
  } else {
    lock.unlock();
  }
  auto client = std::make_unique<VptzClient>();
  if (!nobody_looks_up) lock.lock();
  ++all_clients.used;
  return client;
}

void Retire(std::unique_ptr<VptzClient> client) {
  const std::lock_guard<std::recursive_mutex> alone(coming_and_going);
  const std::lock_guard<std::mutex> lock(all_clients.mutex);
  all_clients.unused.push_back(std::move(client));
  if (--all_clients.used == 0) all_clients.unused.clear();
}

// Keeps the database from being closed as long as it lives.
class CallUnderWay {
 public:
  CallUnderWay() {
    const std::lock_guard<std::mutex> lock(all_clients.mutex);
    ++all_clients.calls;
  }
  ~CallUnderWay() {
    const std::lock_guard<std::mutex> lock(all_clients.mutex);
    --all_clients.calls;
  }
  CallUnderWay(const CallUnderWay&) = delete;
  CallUnderWay& operator=(const CallUnderWay&) = delete;
};

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

void WatchForks() {
  pthread_atfork(nullptr, nullptr, ForgetInChild);
  const auto before = [] {
    const WithoutGil others_run;
    coming_and_going.lock();
  };
  const auto after = [] { coming_and_going.unlock(); };
  py::module_::import("os").attr("register_at_fork")(py::arg("before") = py::cpp_function(before),
                                                     py::arg("after_in_parent") = py::cpp_function(after));
}

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
    if (goes_on) {
      const CallUnderWay keeps_the_database;
      task.Run(*client_);
    }
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

bool Session::Start(std::shared_ptr<Task> task) {
  if (!has_thread_ && !StartThread()) return false;
  {
    const std::lock_guard<std::mutex> lock(monitor_->mutex);
    task_ = std::move(task);
  }
  work_.notify_one();
  return true;
}

bool Session::StartThread() {
  const SignalsOff quiet_thread;
  try {
    std::thread([self = shared_from_this()] { self->Work(); }).detach();
  } catch (const std::exception&) {  // the system has no more threads, or no memory for one
    return false;
  }
  return has_thread_ = true;
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
