#include <cerrno>
#include <cstdio>

#include <dorv_bus.h>
#include <dorv_bus_service.h>
#include <vptz/vptz.pb.h>
#include <zerklog.h>

int main() {
  ZERK_LOG_write_newline(1, ZERK_LOG_DETAIL, "platform.cc", 1, "main", "%s", "not shown");
  tutorial::VptzCommand command;
  command.set_method_name("get_status");
  if (command.ByteSizeLong() != 12) return 1;
  bus_init();
  bus_client* client = bus_client_new("consumer");
  int length = 0;
  const int result =
      client == nullptr ? 0 : bus_method_call_sync(client, "vptz", "get_status", "", 0, nullptr, &length, 1);
  bus_client_free(client);
  bus_cleanup();
  std::printf("%d\n", result);
  return result == -ENOTCONN || result == -EINVAL ? 0 : 1;
}
