// What calls need of the interpreter: other threads run while a call waits,
// signal handlers run while the main thread waits, and a call under way does not
// keep the interpreter from ending.
#ifndef VPTZ_BINDINGS_PYTHON_INTERPRETER_H
#define VPTZ_BINDINGS_PYTHON_INTERPRETER_H

#include <pybind11/pybind11.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vptz_python {

namespace py = pybind11;

// How long the main thread waits before it looks for signals again.
constexpr std::chrono::milliseconds kSignalInterval{20};

// Remembers the main thread. Once, on import.
void WatchInterpreter();

// Whether this is the thread that runs Python's signal handlers.
bool OnMainThread();

// Counts the forks that led to this process; tells objects of a parent from own ones.
int ForkGeneration();

// Lets the thread rest for ever when the interpreter is gone: another thread than
// the main one must not return into it, and Python would end such a thread by
// unwinding through frames that cannot be unwound. The process ends all the same.
class RestAfterEnd {
 public:
  RestAfterEnd() = default;
  ~RestAfterEnd();
  RestAfterEnd(const RestAfterEnd&) = delete;
  RestAfterEnd& operator=(const RestAfterEnd&) = delete;
};

// Lets other Python threads run as long as it lives.
class WithoutGil {
 public:
  WithoutGil() : state_(PyEval_SaveThread()) {}
  ~WithoutGil() noexcept(false);
  WithoutGil(const WithoutGil&) = delete;
  WithoutGil& operator=(const WithoutGil&) = delete;

 private:
  PyThreadState* state_;
};

// Calls a function of the application's, on whatever thread. Throws what it raises.
py::object CallPython(const py::handle& function, const py::tuple& arguments);

// Runs the handlers of signals that have come. Throws what a handler raises.
void RunSignalHandlers();

// Throws vptz.VptzError in a child made by fork() since then: what its parent waits
// for does not come there.
void ThrowIfForkedSince(int generation);

// Waits until `done` is true, which is asked with the mutex held. Runs signal
// handlers meanwhile, on the main thread; throws what a handler raises.
template <class Done>
void Await(std::mutex& mutex, std::condition_variable& changed, Done done) {
  const int generation = ForkGeneration();
  for (;;) {
    bool is_done = false;
    {
      const WithoutGil others_run;
      std::unique_lock<std::mutex> lock(mutex);
      is_done = changed.wait_for(lock, kSignalInterval, done);
    }
    if (is_done) return;
    RunSignalHandlers();
    ThrowIfForkedSince(generation);
  }
}

// Sleeps, and runs signal handlers meanwhile; throws what a handler raises.
void Sleep(std::chrono::nanoseconds duration);

// Calls `done`, with the GIL held, until it is true. False when the limit, in
// seconds, is over.
template <class Done>
bool AwaitWithin(double limit, std::chrono::milliseconds pause, Done done) {
  using std::chrono::steady_clock;
  constexpr double kYear = 365.0 * 24 * 3600;
  const double seconds = limit > 0.0 ? (limit < kYear ? limit : kYear) : 0.0;
  const auto end = steady_clock::now() +
                   std::chrono::duration_cast<steady_clock::duration>(std::chrono::duration<double>(seconds));
  while (!done()) {
    const steady_clock::duration left = end - steady_clock::now();
    if (left <= steady_clock::duration::zero()) return false;
    Sleep(left < pause ? left : pause);
  }
  return true;
}

}  // namespace vptz_python

#endif
