// Sends a prepared request without waiting; the answer comes to a callback.
#include <chrono>
#include <cstdio>
#include <future>

#include <vptz/vptz_client.h>

namespace {

std::promise<std::int32_t> answered;

// Runs on a thread of the bus library. A negative length says that the call
// failed: it is the errno value.
void OnAnswer(bus_client*, void*, const char* method, const void*, std::int32_t length) {
  std::printf("%s: %d\n", method, length);
  answered.set_value(length);
}

}  // namespace

int main() {
  // A VptzCommand that holds nothing but its method's name (field 1). Programs
  // with more to say use the message classes of vptz/vptz.pb.h.
  const char request[] = "\x0a\x0aget_status";
  constexpr int kRequestLength = sizeof request - 1;
  constexpr int kTimeout = 2;  // seconds
  VptzClient client;
  if (client.Connect("asynchronous", nullptr) < 0) return 1;
  const int result = client.CallAsync("get_status", request, kRequestLength, OnAnswer, kTimeout);
  if (result < 0) {
    std::fprintf(stderr, "not sent: %d\n", result);
    return 1;
  }
  std::printf("sent; free for other work\n");
  std::future<std::int32_t> answer = answered.get_future();
  if (answer.wait_for(std::chrono::seconds(kTimeout + 1)) != std::future_status::ready) return 1;
  return answer.get() < 0 ? 1 : 0;
}
