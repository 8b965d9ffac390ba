#include "client.h"

#include <algorithm>
#include <cerrno>

#include "binding.h"
#include "interpreter.h"

namespace vptz_python {
namespace {

using std::chrono::steady_clock;

// How long a call waits for the session of an abandoned one before it takes
// another. An abandoned call that waits for an answer comes back at once.
constexpr std::chrono::milliseconds kComesBack{50};

// Keeps what a child has inherited for as long as it lives: the parent's threads are
// not there, but their locks and connections are.
void LeaveAlone(std::shared_ptr<void> inherited) {
  static auto& kept = *new std::vector<std::shared_ptr<void>>;
  kept.push_back(std::move(inherited));
}

// Await on a thread that runs no signal handlers, without the GIL.
template <class Done>
void AwaitQuietly(Monitor& monitor, Done done) {
  std::unique_lock<std::mutex> lock(monitor.mutex);
  while (!done()) monitor.changed.wait_for(lock, kSignalInterval);
}

}  // namespace

// In a child made by fork() the mutex is the parent's.
Client::Turn::~Turn() {
  if (!taken_ || client_.Inherited()) return;
  {
    const std::lock_guard<std::mutex> lock(client_.monitor_->mutex);
    client_.turn_ = std::thread::id();
  }
  client_.monitor_->changed.notify_all();
}

void Client::Turn::Wait() {
  if (client_.Inherited()) RaiseUnlessDone(-ENOTCONN);
  if (OnMainThread()) {
    return Await(client_.monitor_->mutex, client_.monitor_->changed, [this] { return Take(); });
  }
  const WithoutGil others_run;
  AwaitQuietly(*client_.monitor_, [this] { return Take(); });
}

bool Client::Turn::Take() {
  const std::thread::id self = std::this_thread::get_id();
  if (client_.turn_ == self) return true;
  if (client_.turn_ != std::thread::id()) return false;
  client_.turn_ = self;
  taken_ = true;
  return true;
}

Client::Client() : generation_(ForkGeneration()) {
  const WithoutGil others_run;
  sessions_.push_back(Session::Make(monitor_));
}

Client::~Client() {
  ForgetCallbacks(*this);
  if (Inherited()) {
    LeaveAlone(std::move(monitor_));
    for (std::shared_ptr<Session>& session : sessions_) LeaveAlone(std::move(session));
    return;
  }
  const WithoutGil others_run;
  SetTarget(std::nullopt);
  for (const std::shared_ptr<Session>& session : sessions_) session->Quit();
  sessions_.clear();
}

bool Client::Inherited() const { return generation_ != ForkGeneration(); }

void Client::SetTarget(std::optional<Target> target) {
  const std::lock_guard<std::mutex> lock(monitor_->mutex);
  monitor_->target = std::move(target);
  ++monitor_->epoch;
  for (const std::shared_ptr<Session>& session : sessions_) session->Disconnect();
}

void Client::Connect(const std::string& name, const std::optional<std::string>& address) {
  if (Inherited()) RaiseUnlessDone(-ENOTCONN);
  {
    const WithoutGil others_run;
    SetTarget(Target{name, address});
  }
  struct Nothing : Task {
    void Run(VptzClient&) override {}
  };
  const auto task = std::make_shared<Nothing>();  // what connects is that there is a call
  Perform(task, nullptr);
  if (task->reachable) return;
  PyErr_SetString(PyExc_ConnectionError, "cannot connect to the message bus; the log tells why");
  throw py::error_already_set();
}

void Client::Disconnect() {
  if (Inherited()) return;
  const WithoutGil others_run;
  SetTarget(std::nullopt);
}

void Client::Perform(const std::shared_ptr<Task>& task, const VptzClient* wanted) {
  if (Inherited()) RaiseUnlessDone(-ENOTCONN);
  if (OnMainThread()) {
    HandOver(task, wanted);
  } else {
    PerformHere(*task, wanted);
  }
  task->Rethrow();
}

// Makes a call that no signal handler can interrupt.
void Client::PerformHere(Task& task, const VptzClient* wanted) {
  const WithoutGil others_run;
  Turn turn(*this);
  AwaitQuietly(*monitor_, [&] { return turn.Take(); });
  std::shared_ptr<Session> session;
  const auto since = steady_clock::now();
  AwaitQuietly(*monitor_, [&] { return (session = TakeFree(wanted)) != nullptr || !OneComesBack(since); });
  if (session == nullptr) session = TakeNew();
  session->Execute(task);
}

// Has another thread make the call, while this one runs signal handlers.
void Client::HandOver(const std::shared_ptr<Task>& task, const VptzClient* wanted) {
  std::mutex& mutex = monitor_->mutex;
  std::condition_variable& changed = monitor_->changed;
  Turn turn(*this);
  turn.Wait();
  std::shared_ptr<Session> session;
  const auto since = steady_clock::now();
  Await(mutex, changed, [&] { return (session = TakeFree(wanted)) != nullptr || !OneComesBack(since); });
  if (session == nullptr) {
    const WithoutGil others_run;
    session = TakeNew();
  }
  if (!session->Start(task)) {  // rather uninterrupted than not at all
    const WithoutGil others_run;
    return session->Execute(*task);
  }
  try {
    Await(mutex, changed, [&] { return task->done; });
  } catch (...) {
    if (Inherited()) throw;
    const WithoutGil others_run;
    const std::lock_guard<std::mutex> lock(mutex);
    session->Abandon(*task);
    throw;
  }
}

// Needs the mutex. The wanted session, or else any.
std::shared_ptr<Session> Client::TakeFree(const VptzClient* wanted) {
  const auto is_wanted = [&](const auto& session) { return session->client() == wanted; };
  auto found = std::find_if(sessions_.begin(), sessions_.end(), is_wanted);
  if (found == sessions_.end()) {
    found =
        std::find_if(sessions_.begin(), sessions_.end(), [](const auto& session) { return !session->busy(); });
  }
  if (found == sessions_.end() || (*found)->busy()) return nullptr;
  (*found)->Take();
  return *found;
}

// Needs the mutex. Whether a session is about to come back from an abandoned call.
bool Client::OneComesBack(steady_clock::time_point since) const {
  const bool patient = steady_clock::now() < since + kComesBack;
  return std::any_of(sessions_.begin(), sessions_.end(), [&](const auto& session) {
    return session->busy() && !session->awaited() && (patient || !session->stuck());
  });
}

std::shared_ptr<Session> Client::TakeNew() {
  std::shared_ptr<Session> session = Session::Make(monitor_);
  const std::lock_guard<std::mutex> lock(monitor_->mutex);
  session->Take();
  sessions_.push_back(session);
  return session;
}

}  // namespace vptz_python
