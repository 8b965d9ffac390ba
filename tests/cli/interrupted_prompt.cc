// Loaded before the tool: interrupts it when it has written its prompt to the
// terminal and has not begun to read.
#include <dlfcn.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <string_view>

extern "C" __attribute__((visibility("default"))) ssize_t write(int descriptor, const void* bytes,
                                                                std::size_t size) {
  static const auto next = reinterpret_cast<decltype(&write)>(dlsym(RTLD_NEXT, "write"));
  const ssize_t written = next(descriptor, bytes, size);
  const bool prompt = std::string_view(static_cast<const char*>(bytes), size) == "Password: ";
  if (prompt && isatty(descriptor) == 1) raise(SIGINT);
  return written;
}
