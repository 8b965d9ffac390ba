// Connects, asks the service how it is, and lists the devices in the database.
#include <chrono>
#include <cstdio>

#include <vptz/results.h>
#include <vptz/vptz_client.h>
#include <vptz/wait.h>

namespace {

// Each profile has a row id of its own, by which commands name it.
void PrintProfiles(const CVptzDevice& device) {
  for (const VptzPtzData& ptz : device.ptz_list) std::printf("    PTZ node %u: %s\n", ptz.id, ptz.node.c_str());
  for (const VptzMediaData& media : device.media_list) {
    std::printf("    media source %u: %s\n", media.id, media.node.c_str());
  }
}

}  // namespace

int main() {
  VptzClient client;
  if (client.Connect("status", nullptr) < 0) {
    std::fprintf(stderr, "no connection to the message bus; the log tells why\n");
    return 1;
  }
  const int status = VptzWaitForService(client, std::chrono::seconds(5));
  if (status != 0) {
    std::fprintf(stderr, "the service is not ready: %s\n", VptzExplainResult(status).text);
    return 1;
  }
  std::printf("library %s, %d devices\n", client.Version(), client.QueryDeviceCount());
  for (const CVptzDevice& device : *client.QueryDeviceAll()) {
    std::printf("device %u: %s at %s\n", device.id, device.protocol.c_str(), device.address.c_str());
    PrintProfiles(device);
  }
  return 0;
}
