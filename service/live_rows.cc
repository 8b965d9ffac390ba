#include "live_rows.h"

#include <iterator>

#include "log.h"
#include "rows.h"
#include "settings.h"
#include "storage.h"

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

void LiveRows::Start() {
  service_.agenda.PostIn(kPeriod, [this] {
    Collect();
    GoOn();
  });
}

// One camera at a time, so that calls need not wait for all of them.
void LiveRows::GoOn() {
  if (changed_.empty()) {
    Try([this] { WritePorts(); });
    Start();
    return;
  }
  WriteNext();
  service_.agenda.Post([this] { GoOn(); });
}

void LiveRows::Write() {
  Collect();
  while (!changed_.empty()) WriteNext();
  Try([this] { WritePorts(); });
}

void LiveRows::Collect() {
  const auto lock = service_.world.Enter();
  ForgetRemoved();
  changed_.clear();
  for (const auto& member : service_.world.members()) {
    if (!member->known()) continue;
    const Camera& camera = member->camera;
    const auto written = written_.find(member->ids.ptz);
    if (written != written_.end() && written->second.position == camera.position() &&
        written->second.home == camera.home()) {
      continue;
    }
    changed_.push_back(member->ids.ptz);
  }
}

void LiveRows::ForgetRemoved() {
  for (auto written = written_.begin(); written != written_.end();) {
    const bool there = service_.world.MemberOfPtz(written->first) != nullptr;
    written = there ? std::next(written) : written_.erase(written);
  }
}

void LiveRows::WriteNext() {
  const std::uint32_t ptz = changed_.back();
  changed_.pop_back();
  std::optional<Camera> camera;
  {
    const auto lock = service_.world.Enter();
    if (const Camera* there = service_.world.FindPtz(ptz)) camera = *there;
  }
  if (camera) {
    Try([&] { WriteCamera(ptz, *camera); });
  }
}

void LiveRows::WriteCamera(std::uint32_t ptz, const Camera& camera) {
  StoreAxes(ptz, camera);
  if (camera.home()) StoreHome(ptz, *camera.home());
  written_[ptz] = {camera.position(), camera.home()};
}

void LiveRows::WritePorts() {
  std::vector<std::string> ports;
  {
    const auto lock = service_.world.Enter();
    ports = service_.world.usb_tty_devices();
  }
  if (ports == ports_) return;
  StorePorts(ports);
  ports_ = ports;
}

}  // namespace vptzd
