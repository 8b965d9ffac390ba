// Sets the picture of every media profile of a device, and focuses by hand.
#include <chrono>
#include <cstdio>
#include <thread>

#include <vptz/vptz_client.h>

namespace {

bool Done(const char* what, int result) {
  if (result != 0) std::fprintf(stderr, "%s: %d\n", what, result);
  return result == 0;
}

}  // namespace

int main() {
  VptzClient client;
  if (client.Connect("imaging", nullptr) < 0) return 1;
  CVptzDevice* device = client.QueryDeviceById(1);
  if (device == nullptr || device->media_list.empty()) {
    std::fprintf(stderr, "no device 1 with media\n");
    return 1;
  }
  constexpr unsigned int kEveryProfile = 0;
  constexpr unsigned int kFirstProfile = 1;
  if (!Done("brightness", device->SetBrightness(60.0, kEveryProfile))) return 1;
  if (!Done("contrast", device->SetContrast(55.0, kFirstProfile))) return 1;
  if (!Done("manual focus", device->SwitchFocusMode(kFirstProfile))) return 1;
  if (!Done("focus far", device->FocusFar("", kFirstProfile))) return 1;
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  if (!Done("focus stop", device->FocusStop("", kFirstProfile))) return 1;
  if (!Done("automatic focus", device->SwitchFocusMode(kFirstProfile))) return 1;

  if (device->LoadMediaProfiles() < 0) return 1;
  const VptzMediaData& media = device->media_list[0];
  std::printf("%s: brightness %.0f, contrast %.0f\n", media.node.c_str(), media.brightness.value,
              media.contrast.value);
  return 0;
}
