// Waiting, as applications need it: until the service answers, until a camera is
// there, until nothing moves any more.
//
// Each function asks again and again, with a pause between, until what it waits
// for is true or its limit is over. It blocks the caller and uses the client
// meanwhile: a VptzClient is used by one thread at a time, so call none of these
// from a callback. A limit of 0 asks once. A call under way when the limit comes
// may last for its own time-out longer.
#ifndef VPTZ_WAIT_H
#define VPTZ_WAIT_H

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <vptz/vptz_client.h>

// Calls `done`, a bool (), until it returns true. False when the limit is over; one
// of more than a year counts as a year, a negative one as 0.
template <class Done>
bool VptzWaitUntil(Done done, std::chrono::milliseconds limit,
                   std::chrono::milliseconds pause = std::chrono::milliseconds(100)) {
  using std::chrono::steady_clock;
  // The clock cannot tell times as far away as a limit can be.
  constexpr std::chrono::milliseconds kYear = std::chrono::hours(365 * 24);
  const steady_clock::time_point end =
      steady_clock::now() + std::min(std::max(limit, std::chrono::milliseconds::zero()), kYear);
  while (!done()) {
    const steady_clock::duration left = end - steady_clock::now();
    if (left <= steady_clock::duration::zero()) return false;
    std::this_thread::sleep_for(std::min<steady_clock::duration>(pause, left));
  }
  return true;
}

// Waits until the service answers GetStatus. The client must have connected
// once; it joins the bus by itself when the broker comes later. 0 or a positive
// status, else the last failure (vptz/results.h explains it).
inline int VptzWaitForService(VptzClient& client, std::chrono::milliseconds limit) {
  int status = -1;
  VptzWaitUntil([&] { return (status = client.GetStatus()) >= 0; }, limit);
  return status;
}

// Waits until the database holds a device for which `wanted`, a
// bool (const CVptzDevice&), is true. Its handle lies in the client's registry,
// as one from QueryDeviceAll does; null when the limit is over.
template <class Wanted>
CVptzDevice* VptzWaitForDevice(VptzClient& client, Wanted wanted, std::chrono::milliseconds limit) {
  CVptzDevice* found = nullptr;
  const auto look = [&] {
    std::vector<CVptzDevice>& devices = *client.QueryDeviceAll();
    const auto device = std::find_if(devices.begin(), devices.end(), wanted);
    found = device == devices.end() ? nullptr : &*device;
    return found != nullptr;
  };
  VptzWaitUntil(look, limit);
  return found;
}

// Whether an axis stands still: its speed is 0, or not known, and its position is
// the one of the reading before. An axis of which nothing is known counts as still.
inline bool VptzIsStill(const VptzAxisData& before, const VptzAxisData& now) {
  if (now.speed.valid && now.speed.value != 0.0) return false;
  if (!now.position.valid) return true;
  return before.position.valid && before.position.value == now.position.value;
}

// Whether all axes of a PTZ profile stand still.
inline bool VptzIsStill(const VptzPtzData& before, const VptzPtzData& now) {
  return VptzIsStill(before.pan, now.pan) && VptzIsStill(before.tilt, now.tilt) &&
         VptzIsStill(before.zoom, now.zoom);
}

// Waits until no axis of a PTZ profile moves, as two readings in a row show. A
// pause of 100 ms lies between them, or the limit where that is shorter: at once
// they would agree in motion too. `device_id` is the device's row id, `token` the
// profile's (VptzPtzData::node). The last reading goes to *state unless that is
// null. 0; -ETIMEDOUT when the profile still moves at the limit; else the failure
// of the reading.
inline int VptzWaitUntilStill(VptzClient& client, unsigned int device_id, const std::string& token,
                              std::chrono::milliseconds limit, VptzPtzData* state = nullptr) {
  VptzPtzData before;
  VptzPtzData now;
  int result = client.QueryPtzProfiles(device_id, token, &before);
  bool still = false;
  const auto read = [&] {
    result = client.QueryPtzProfiles(device_id, token, &now);
    still = result >= 0 && VptzIsStill(before, now);
    before = now;
    return still || result < 0;
  };
  if (result >= 0) {
    const auto pause = std::min(limit, std::chrono::milliseconds(100));
    std::this_thread::sleep_for(pause);
    VptzWaitUntil(read, limit - pause);
  }
  if (state != nullptr) *state = before;
  return result < 0 ? result : (still ? 0 : -ETIMEDOUT);
}

#endif
