// Goes from preset to preset of the first device that has any.
#include <chrono>
#include <cstdio>

#include <vptz/results.h>
#include <vptz/vptz_client.h>
#include <vptz/wait.h>

namespace {

constexpr std::chrono::seconds kLongestMove(30);

int Tour(VptzClient& client, CVptzDevice& device) {
  const VptzPtzData& profile = device.ptz_list[0];
  for (const VptzPresetData& preset : profile.presets) {
    std::printf("%s: pan %.1f, tilt %.1f, zoom %.1f\n", preset.name.c_str(), preset.pan, preset.tilt,
                preset.zoom);
    int result = device.GotoPreset(preset.token, kVptzNotCommanded, kVptzNotCommanded, kVptzNotCommanded, 1);
    if (result == 0) result = VptzWaitUntilStill(client, device.id, profile.node, kLongestMove);
    if (result != 0) {
      std::fprintf(stderr, "the tour ends here: %s\n", VptzExplainResult(result).text);
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
