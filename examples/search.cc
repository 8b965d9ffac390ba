// Searches for cameras and waits for the signal that tells the end.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include <vptz/vptz_client.h>

namespace {

std::mutex mutex;
std::condition_variable changed;
bool finished = false;

// Runs on a thread of the bus library: it only passes the news on.
void OnFinish(bus_client*, void*, const char*, const void*, std::int32_t) {
  const std::lock_guard<std::mutex> lock(mutex);
  finished = true;
  changed.notify_one();
}

bool WaitForEnd() {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(30), [] { return finished; });
}

}  // namespace

int main() {
  VptzClient client;
  if (client.Connect("search", nullptr) < 0) return 1;
  // Subscribed before the search begins, so that its end is not missed.
  if (client.SubscribeSearchDeviceFinishSignal(OnFinish) < 0) return 1;
  const int before = client.QueryDeviceCount();
  const int result = client.SearchDevice("", "ONVIF,NDI,NDIHX,QX310");
  if (result != 0) {
    std::fprintf(stderr, "no search: %d\n", result);
    return 1;
  }
  if (!WaitForEnd()) {
    std::fprintf(stderr, "the search does not end\n");
    return 1;
  }
  std::printf("%d devices were known, %d are now\n", before, client.QueryDeviceCount());
  return 0;
}
