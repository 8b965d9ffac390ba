#include "process.h"

#include <mosquitto.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <mutex>

namespace dorv {
namespace {

std::mutex library_mutex;
int library_users = 0;
std::atomic<unsigned> process_number{0};

// Around a fork() nobody is in the middle of anything that library_mutex guards.
void LockForFork() { library_mutex.lock(); }
void UnlockInParent() { library_mutex.unlock(); }
void UnlockInChild() {
  ++process_number;
  library_mutex.unlock();
}

void WatchForks() {
  [[maybe_unused]] static const int result = pthread_atfork(LockForFork, UnlockInParent, UnlockInChild);
}

thread_local bool broken_pipe = false;
thread_local bool quiet_thread = false;

sigset_t JustSigpipe() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

}  // namespace

unsigned ProcessNumber() { return process_number; }

int AcquireLibrary() {
  WatchForks();
  const std::lock_guard<std::mutex> lock(library_mutex);
  if (library_users == 0 && mosquitto_lib_init() != MOSQ_ERR_SUCCESS) {
    return -ENOMEM;
  }
  ++library_users;
  return 0;
}

void ReleaseLibrary() {
  const std::lock_guard<std::mutex> lock(library_mutex);
  if (library_users > 0 && --library_users == 0) {
    mosquitto_lib_cleanup();
  }
}

mosquitto* NewMosquitto(const char* client_id, void* user_data) {
  const std::lock_guard<std::mutex> lock(library_mutex);
  struct sigaction before {};
  sigaction(SIGPIPE, nullptr, &before);
  mosquitto* instance = mosquitto_new(client_id, true, user_data);
  sigaction(SIGPIPE, &before, nullptr);
  return instance;
}

SigpipeGuard::SigpipeGuard() : active_(!quiet_thread) {
  if (!active_) {
    return;
  }
  const sigset_t sigpipe = JustSigpipe();
  pthread_sigmask(SIG_BLOCK, &sigpipe, &before_);
  if (sigismember(&before_, SIGPIPE) == 1) {
    // The application holds it back itself; one that waits already stays.
    sigset_t pending;
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
  }
}

SigpipeGuard::~SigpipeGuard() {
  if (!active_) {
    return;
  }
  const int saved_errno = errno;
  if (broken_pipe && !was_pending_) {
    const sigset_t sigpipe = JustSigpipe();
    const timespec at_once{};
    while (sigtimedwait(&sigpipe, nullptr, &at_once) < 0 && errno == EINTR) {
    }
  }
  broken_pipe = false;
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  errno = saved_errno;
}

void SigpipeGuard::NoteBrokenPipe() { broken_pipe = true; }

void MarkQuiet() { quiet_thread = true; }

}  // namespace dorv
