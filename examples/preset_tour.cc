// Goes from preset to preset of the first device that has any.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

#include <vptz/vptz_client.h>

namespace {

bool IsStill(const VptzAxisData& axis) { return axis.speed.value == 0.0; }

// Asks for the position until nothing moves; false when that takes too long.
bool WaitUntilStill(VptzClient& client, const CVptzDevice& device, const VptzPtzData& profile) {
  for (int tries = 0; tries < 600; ++tries) {
    VptzPtzData now;
    if (client.QueryPtzProfiles(device.id, profile.node, &now) != 0) return false;
    if (IsStill(now.pan) && IsStill(now.tilt) && IsStill(now.zoom)) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

int Tour(VptzClient& client, CVptzDevice& device) {
  const VptzPtzData& profile = device.ptz_list[0];
  for (const VptzPresetData& preset : profile.presets) {
    std::printf("%s: pan %.1f, tilt %.1f, zoom %.1f\n", preset.name.c_str(), preset.pan, preset.tilt,
                preset.zoom);
    const int result =
        device.GotoPreset(preset.token, kVptzNotCommanded, kVptzNotCommanded, kVptzNotCommanded, 1);
    if (result != 0 || !WaitUntilStill(client, device, profile)) {
      std::fprintf(stderr, "the tour ends here: %d\n", result);
      return 1;
    }
  }
  return 0;
}

}  // namespace

int main() {
  VptzClient client;
  if (client.Connect("tour", nullptr) < 0) return 1;
  for (CVptzDevice& device : *client.QueryDeviceAll()) {
    if (!device.ptz_list.empty() && !device.ptz_list[0].presets.empty()) return Tour(client, device);
  }
  std::fprintf(stderr, "no device has presets\n");
  return 1;
}
