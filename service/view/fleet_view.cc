#include "view/fleet_view.h"

#include <algorithm>
#include <cmath>

namespace vptzd {
namespace {

AxisView ViewOf(const Axis& axis) {
  return {axis.position(), axis.speed(), axis.limits().min, axis.limits().max};
}

// A camera without a name is known by its address.
std::string NameOf(const CameraDescription& description) {
  return description.name.empty() ? description.address : description.name;
}

std::vector<std::string> PresetNames(const PresetList& presets) {
  std::vector<std::string> names;
  for (const StoredPosition& preset : presets.all())
    names.push_back(preset.name.empty() ? preset.token : preset.name);
  return names;
}

double BlurOf(double focus) {
  return std::abs(focus - Camera::kSharp) / std::max(Camera::kSharp, 1 - Camera::kSharp);
}

CameraView ViewOf(const Member& member, bool online) {
  const Camera& camera = member.camera;
  const ImageSettings& image = camera.media_profiles().front().image;
  CameraView view;
  view.device = member.ids.device;
  view.ptz = member.ids.ptz;
  view.name = NameOf(camera.description());
  view.protocol = camera.description().protocol;
  view.powered = camera.powered();
  view.online = online;
  view.logged_in = camera.logged_in();
  view.pan = ViewOf(camera.axis(kPan));
  view.tilt = ViewOf(camera.axis(kTilt));
  view.zoom = ViewOf(camera.axis(kZoom));
  view.brightness = image.brightness;
  view.contrast = image.contrast;
  view.sharpness = image.sharpness;
  view.auto_focus = image.auto_focus != 0;
  view.blur = BlurOf(camera.focus().position());
  view.track_mode = camera.track_mode();
  view.presets = PresetNames(camera.presets());
  return view;
}

}  // namespace

std::vector<CameraView> ViewOf(Fleet& fleet) {
  const auto lock = fleet.Enter();
  std::vector<CameraView> views;
  for (const auto& member : fleet.members()) {
    if (!member->known() || !member->driven) continue;
    views.push_back(ViewOf(*member, fleet.FindFault(FaultKind::kOffline, member.get(), "") == nullptr));
  }
  return views;
}

}  // namespace vptzd
