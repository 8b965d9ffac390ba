// Brings signals to an object of the application's, and ends while one may still
// be on its way.
//
// A callback gets no pointer of the application's. It finds the object through a
// variable of the program, under a mutex that also lets nothing end while the
// callback uses it.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include <vptz/vptz_client.h>

namespace {

std::mutex mutex;

class Screen* screen = nullptr;  // the one that signals reach; guarded by the mutex

// Shows what the database holds; here it only counts how often it would have to.
class Screen {
 public:
  Screen() {
    const std::lock_guard<std::mutex> lock(mutex);
    screen = this;
  }

  // Waits for a callback that uses it; a later one finds none. So it does no harm
  // that a callback may run on for a while after its client's end.
  ~Screen() {
    const std::lock_guard<std::mutex> lock(mutex);
    screen = nullptr;
  }

  // With the mutex held.
  void Outdated() {
    ++changes_;
    changed_.notify_one();
  }

  bool WaitForChange() {
    std::unique_lock<std::mutex> lock(mutex);
    return changed_.wait_for(lock, std::chrono::seconds(5), [this] { return changes_ > 0; });
  }

 private:
  std::condition_variable changed_;
  int changes_ = 0;
};

// Runs on a thread of the bus library.
void OnUpdate(bus_client*, void*, const char*, const void*, std::int32_t) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (screen != nullptr) screen->Outdated();
}

}  // namespace

int main() {
  VptzClient client;
  Screen own;  // ends before the client
  if (client.Connect("screen", nullptr) < 0) return 1;
  if (client.SubscribeUpdateDevicesSignal(OnUpdate) < 0) return 1;
  if (client.ConfigDevices() != 0 || !own.WaitForChange()) return 1;
  std::printf("rows have changed: time to look again\n");
  return 0;
}
