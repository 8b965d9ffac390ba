#include "fleet/positions.h"

#include <iterator>

#include "log.h"
#include "store/changes.h"
#include "store/kept.h"
#include "store/row_access.h"

namespace vptzd {
namespace {

// What fails is written the next time.
template <class Writing>
void Try(Writing writing) {
  try {
    writing();
  } catch (const StorageError& error) {
    VPTZD_LOG(LogLevel::kWarning, "a position, home or port is not written: %s", error.what());
  }
}

}  // namespace

void LivePositions::Start() {
  agenda_.PostIn(kPeriod, [this] {
    Collect();
    WriteOn();
  });
}

// One camera at a time, so that calls need not wait for all of them.
void LivePositions::WriteOn() {
  if (changed_.empty()) {
    Try([this] { WritePorts(); });
    Start();
    return;
  }
  WriteNext();
  agenda_.Post([this] { WriteOn(); });
}

void LivePositions::Write() {
  Collect();
  while (!changed_.empty()) WriteNext();
  Try([this] { WritePorts(); });
}

void LivePositions::Collect() {
  const auto lock = fleet_.Enter();
  ForgetRemoved();
  changed_.clear();
  for (const auto& member : fleet_.members()) {
    if (!member->known() || !member->driven) continue;
    const Camera& camera = member->camera;
    const auto written = written_.find(member->ids.ptz);
    if (written != written_.end() && written->second.position == camera.position() &&
        written->second.home == camera.home()) {
      continue;
    }
    changed_.push_back(member->ids.ptz);
  }
}

void LivePositions::ForgetRemoved() {
  for (auto written = written_.begin(); written != written_.end();) {
    const bool there = fleet_.MemberOfPtz(written->first) != nullptr;
    written = there ? std::next(written) : written_.erase(written);
  }
}

void LivePositions::WriteNext() {
  const std::uint32_t ptz = changed_.back();
  changed_.pop_back();
  std::optional<Camera> camera;
  {
    const auto lock = fleet_.Enter();
    if (const Camera* there = fleet_.CameraOfPtz(ptz)) camera = *there;
  }
  if (camera) {
    Try([&] { WriteCamera(ptz, *camera); });
  }
}

void LivePositions::WriteCamera(std::uint32_t ptz, const Camera& camera) {
  StoreAxes(ptz, camera.abilities(), camera.position());
  if (camera.home()) StoreHome(ptz, *camera.home());
  written_[ptz] = {camera.position(), camera.home()};
}

void LivePositions::WritePorts() {
  std::vector<std::string> ports;
  {
    const auto lock = fleet_.Enter();
    ports = fleet_.ports().all();
  }
  if (ports == ports_) return;
  StorePorts(ports);
  ports_ = ports;
}

}  // namespace vptzd
