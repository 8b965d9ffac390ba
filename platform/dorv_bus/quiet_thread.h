#ifndef DORV_BUS_QUIET_THREAD_H
#define DORV_BUS_QUIET_THREAD_H

#include <signal.h>

#include <thread>
#include <utility>

namespace dorv {

// Whether StartQuietThread has started the calling thread.
bool IsQuietThread();
void MarkQuietThread();

// Starts a thread that no signal reaches: the application's handlers run on the
// application's threads. Throws std::system_error when the system has no thread left.
template <class Body>
std::thread StartQuietThread(Body body) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  try {
    std::thread thread([body = std::move(body)] {
      MarkQuietThread();
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
