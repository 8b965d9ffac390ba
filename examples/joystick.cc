// Drives a camera as a joystick would: a new velocity every 50 ms, and a stop
// that is sent whatever happens.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

#include <vptz/vptz_client.h>

namespace {

// Stops the camera when it goes out of scope, and insists: a stop may be
// repeated without harm.
class Stopper {
 public:
  Stopper(VptzClient& client, unsigned int ptz) : client_(client), ptz_(ptz) {}
  ~Stopper() {
    for (int tries = 0; tries < 5 && client_.PtzStop(ptz_, true, true, true, 1) != 0; ++tries) {
      std::fprintf(stderr, "the stop did not arrive; trying again\n");
    }
  }

 private:
  VptzClient& client_;
  unsigned int ptz_;
};

// A stick that somebody moves in a circle.
double StickPan(int step) { return std::cos(step * 0.3); }
double StickTilt(int step) { return std::sin(step * 0.3); }

}  // namespace

int main() {
  constexpr int kDevice = 1;
  constexpr double kDegreesPerSecond = 25.0;  // at the end of the stick
  VptzClient client;
  if (client.Connect("joystick", nullptr) < 0) return 1;
  const CVptzDevice* const device = client.QueryDeviceById(kDevice);
  if (device == nullptr || device->ptz_list.empty()) return 1;
  const unsigned int ptz = device->ptz_list[0].id;  // the PTZ node's, which need not be the device's
  const Stopper stopper(client, ptz);
  for (int step = 0; step < 20; ++step) {
    const int result = client.ContinuousPanTiltMove(ptz, kDegreesPerSecond * StickPan(step),
                                                    kDegreesPerSecond * StickTilt(step));
    if (result != 0) {
      std::fprintf(stderr, "the camera does not move: %d\n", result);
      return 1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return 0;
}
