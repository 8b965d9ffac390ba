// Makes a device's streams reachable from outside, shows the addresses, and
// closes them again.
#include <cstdio>

#include <vptz/vptz_client.h>

int main() {
  constexpr int kDevice = 1;
  VptzClient client;
  if (client.Connect("nat", nullptr) < 0) return 1;

  std::vector<VptzNATData> mappings;  // empty: the service chooses
  const int enabled = client.EnableNAT(kDevice, NAT_MEDIA, &mappings);
  if (enabled != 0) {
    std::fprintf(stderr, "no mapping: %d\n", enabled);
    return 1;
  }
  // EnableNAT has rebuilt the registry: look the device up only now.
  const CVptzDevice* device = client.QueryDeviceById(kDevice);
  if (device == nullptr) return 1;
  for (const VptzMediaData& media : device->media_list) {
    std::printf("%s\n  from outside: %s\n", media.url.c_str(), media.nat_url.c_str());
  }
  return client.DisableNAT(kDevice, NAT_MEDIA) == 0 ? 0 : 1;
}
