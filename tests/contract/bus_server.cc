// contract_bus_server NAME ADDRESS: serves a name until it is killed. Answers
// the method "echo" and no other. Writes "serving", then for each request the
// time in nanoseconds and its bytes.
#include <dorv_bus_service.h>

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

void WriteLine(const std::string& text) {
  const std::string line = text + '\n';
  if (write(STDOUT_FILENO, line.data(), line.size()) < 0) std::perror("write");
}

// The requests of other methods are kept until the process is killed.
void Handle(bus_service*, bus_request* request, void*) {
  int length = 0;
  const void* bytes = bus_request_payload(request, &length);
  const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
  WriteLine(std::to_string(now.count()) + ' ' +
            std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(length)));
  if (std::strcmp(bus_request_method(request), "echo") == 0) bus_request_reply(request, bytes, length);
}

}  // namespace

int main(int argc, char** argv) {
  bus_service* service = nullptr;
  const int result = argc == 3 ? bus_service_new(argv[1], argv[2], &Handle, nullptr, &service) : -1;
  if (result != 0) {
    std::fprintf(stderr, "cannot serve: %d\n", result);
    return 1;
  }
  WriteLine("serving");
  poll(nullptr, 0, -1);
  return 0;
}
