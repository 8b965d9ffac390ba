// vptz.Client: a session, and others as long as that one does not come back from
// a call that was interrupted.
#ifndef VPTZ_BINDINGS_PYTHON_CLIENT_H
#define VPTZ_BINDINGS_PYTHON_CLIENT_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "session.h"

namespace vptz_python {

// Every function needs the GIL, and gives it up while it waits. One call is made
// at a time: other threads wait for their turn. Signal handlers run on the main
// thread meanwhile; when one raises, the call is abandoned and the exception is
// thrown. A handler may make calls itself, which do not wait for the interrupted one.
class Client : public std::enable_shared_from_this<Client> {
 public:
  class Turn;

  Client();
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Makes a call, `body`, a Result (VptzClient&), which must own what it uses: it
  // may go on when it has been abandoned. On the VptzClient `wanted` rather than
  // on another one, which matters to subscriptions.
  template <class Body>
  auto Run(Body body, const VptzClient* wanted = nullptr) {
    using Result = decltype(body(std::declval<VptzClient&>()));
    struct Call : Task {
      explicit Call(Body&& own_body) : body(std::move(own_body)) {}
      void Run(VptzClient& client) override { result.emplace(body(client)); }
      Body body;
      std::optional<Result> result;
    };
    const auto call = std::make_shared<Call>(std::move(body));
    Perform(call, wanted);
    return std::move(*call->result);
  }

  // Connects; throws ConnectionError.
  void Connect(const std::string& name, const std::optional<std::string>& address);

  // Leaves the bus at once: calls that wait come back.
  void Disconnect();

 private:
  void Perform(const std::shared_ptr<Task>& task, const VptzClient* wanted);
  void PerformHere(Task& task, const VptzClient* wanted);
  void HandOver(const std::shared_ptr<Task>& task, const VptzClient* wanted);
  std::shared_ptr<Session> TakeFree(const VptzClient* wanted);
  bool OneComesBack(std::chrono::steady_clock::time_point since) const;
  std::shared_ptr<Session> TakeNew();
  void SetTarget(std::optional<Target> target);
  bool Inherited() const;

  std::shared_ptr<Monitor> monitor_ = std::make_shared<Monitor>();
  const int generation_;
  std::vector<std::shared_ptr<Session>> sessions_;
  std::thread::id turn_;  // whose it is; guarded by the monitor
};

// The right to make calls, of one thread. Gives back what it has taken. A call that a
// thread makes while it has the turn, such as that of a signal handler within another
// call's wait, uses the same turn, and leaves it there.
class Client::Turn {
 public:
  explicit Turn(Client& client) : client_(client) {}
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  // Waits until it is this thread's. Needs the GIL; throws what signal handlers raise.
  void Wait();

  // Needs the monitor's mutex. Whether this thread may make its calls now.
  bool Take();

 private:
  Client& client_;
  bool taken_ = false;
};

}  // namespace vptz_python

#endif
