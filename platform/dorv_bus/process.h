// What the library shares with the rest of the process, and how it leaves it
// alone.
#ifndef DORV_BUS_PROCESS_H
#define DORV_BUS_PROCESS_H

#include <signal.h>

#include <thread>
#include <utility>

struct mosquitto;

namespace dorv {

// Counted use of libmosquitto's global state. 0 or a negative errno value.
int AcquireLibrary();
void ReleaseLibrary();

// A number that is another one in a child made by fork(). What was made under
// another number belongs to the parent: its threads are not here, its locks may
// be held by threads that are not here, and its socket is still the parent's.
unsigned ProcessNumber();

// mosquitto_new without its side effect: it sets SIGPIPE to ignored for the
// whole process, so what was there is put back.
mosquitto* NewMosquitto(const char* client_id, void* user_data);

// libmosquitto writes to its socket in a way that raises SIGPIPE when the
// broker is gone. Where one lives the signal is held off from this thread, and
// one that was raised here is taken away at the end.
class SigpipeGuard {
 public:
  SigpipeGuard();
  ~SigpipeGuard();
  SigpipeGuard(const SigpipeGuard&) = delete;
  SigpipeGuard& operator=(const SigpipeGuard&) = delete;

  // Something was written to a lost connection: a signal may be pending.
  static void NoteBrokenPipe();

 private:
  sigset_t before_;
  const bool active_;
  bool was_pending_ = false;
};

// Marks the calling thread as one that no signal reaches.
void MarkQuiet();

// Starts a thread that no signal reaches: the application's handlers run on the
// application's threads. Throws std::system_error when there is none to be had.
template <class Body>
std::thread StartQuietThread(Body body) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  try {
    std::thread thread([body = std::move(body)] {
      MarkQuiet();
      body();
    });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
}

}  // namespace dorv

#endif
