// A VptzClient, and the thread that makes its calls for Python's main thread.
//
// A VptzClient is for one thread at a time, and nothing brings a call back before
// its time-out but the end of its connection. So an interrupt abandons the call:
// the connection is closed, which ends the wait for an answer at once and lets
// the call send nothing more; then the session connects again. A call that waits
// for a locked database goes on waiting, and keeps its session meanwhile.
#ifndef VPTZ_BINDINGS_PYTHON_SESSION_H
#define VPTZ_BINDINGS_PYTHON_SESSION_H

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <vptz/vptz_client.h>

namespace vptz_python {

// One call. Owns its arguments and its result, since it may be abandoned.
class Task {
 public:
  virtual ~Task() = default;
  virtual void Run(VptzClient& client) = 0;

  // Throws what Run has thrown.
  void Rethrow() const {
    if (failure) std::rethrow_exception(failure);
  }

  bool done = false;       // guarded by the session's monitor
  bool reachable = false;  // whether the last attempt to connect went well
  std::exception_ptr failure;
};

// Where to connect to.
struct Target {
  std::string name;
  std::optional<std::string> address;
};

// What the sessions of one client share, and the mutex that guards their states.
struct Monitor {
  std::mutex mutex;
  std::condition_variable changed;  // a call is done, a session or the turn is free
  std::optional<Target> target;     // as the application said last
  std::uint64_t epoch = 0;          // counts the changes of the target
};

// Lets no fork happen while a client is made or destroyed, and a child have clients
// of its own. Once, on import.
void WatchForks();

class Session : public std::enable_shared_from_this<Session> {
 public:
  // Makes a VptzClient. Needs no GIL.
  static std::shared_ptr<Session> Make(std::shared_ptr<Monitor> monitor);

  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Tells sessions apart; not to be used.
  const VptzClient* client() const { return client_.get(); }

  // The following need the monitor's mutex held.

  bool busy() const { return busy_; }
  // A caller waits for the call that keeps it busy.
  bool awaited() const { return awaited_; }
  // Its call was abandoned and goes on.
  bool stuck() const { return abandoned_; }
  void Take() { busy_ = awaited_ = true; }
  // Leaves the bus; a call that another thread waits in comes back.
  void Disconnect();
  // Has the next call connect first.
  void ForgetConnection() { connected_ = false; }
  // Abandons the call under way unless it is done: it sends nothing more.
  void Abandon(const Task& task);

  // The following need the session taken, and neither mutex nor GIL.

  // Makes the call on this thread. The session is free afterwards.
  void Execute(Task& task);
  // Has the session's own thread make the call. False when none can be started:
  // then the session is still taken.
  bool Start(std::shared_ptr<Task> task);

  // Ends the session's thread. Needs no GIL.
  void Quit();

 private:
  explicit Session(std::shared_ptr<Monitor> monitor);

  bool Prepare();
  void ConnectAgain();
  void Finish(Task& task);
  bool StartThread();
  void Work();

  const std::shared_ptr<Monitor> monitor_;
  std::unique_ptr<VptzClient> client_;
  std::condition_variable work_;
  std::shared_ptr<Task> task_;  // for the session's thread
  bool has_thread_ = false;
  bool quit_ = false;
  bool busy_ = false;
  bool awaited_ = false;
  bool abandoned_ = false;
  bool has_bus_client_ = false;  // the first Connect has returned
  bool connected_ = false;       // Connect was called for the present target
  bool reachable_ = false;
};

}  // namespace vptz_python

#endif
