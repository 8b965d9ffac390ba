#include "mosquitto_library.h"

#include <mosquitto.h>
#include <pthread.h>
#include <signal.h>

#include <cerrno>
#include <mutex>

namespace dorv {
namespace {

std::mutex library_mutex;
int library_users = 0;

// While the process forks no thread is in the middle of what library_mutex guards.
void LockForFork() { library_mutex.lock(); }
void UnlockAfterFork() { library_mutex.unlock(); }

void WatchForks() {
  [[maybe_unused]] static const int result = pthread_atfork(LockForFork, UnlockAfterFork, UnlockAfterFork);
}

}  // namespace

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

}  // namespace dorv
