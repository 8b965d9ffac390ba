// Connects, asks the service how it is, and lists the devices in the database.
#include <cstdio>

#include <vptz/vptz_client.h>

int main() {
  VptzClient client;
  if (client.Connect("status", nullptr) < 0) {
    std::fprintf(stderr, "no connection to the message bus; the log tells why\n");
    return 1;
  }
  const int status = client.GetStatus();
  if (status != 0) {
    std::fprintf(stderr, "the service is not ready: %d\n", status);
    return 1;
  }
  std::printf("library %s, %d devices\n", client.Version(), client.QueryDeviceCount());
  for (const CVptzDevice& device : *client.QueryDeviceAll()) {
    std::printf("%u  %-6s %s (%zu PTZ, %zu media profiles)\n", device.id, device.protocol.c_str(),
                device.address.c_str(), device.ptz_list.size(), device.media_list.size());
  }
  return 0;
}
