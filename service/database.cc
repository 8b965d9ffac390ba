#include "database.h"

#include <cstdio>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

#include <vptz/model/device.h>
#include <vptz/model/device_type.h>
#include <vptz/model/media.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>
#include <vptz/model/vptzmodel.h>

namespace vptzd {
namespace {

// What a lookup of the model found, owned.
template <class Row, class Query>
std::unique_ptr<Row> Found(Query query) {
  Row* row = nullptr;
  query(&row);
  return std::unique_ptr<Row>(row);
}

// Inserts a row; its id is in it afterwards.
template <class Row>
void Insert(Row* row, const char* what) {
  if (Row::Add(row) < 0) throw std::runtime_error(std::string("the database takes no ") + what);
}

// Addresses of the range that is kept for documentation: no camera is there.
std::string HostOf(std::size_t number) { return "192.0.2." + std::to_string(number); }

std::string ServiceUriOf(std::size_t number) { return "http://" + HostOf(number) + "/onvif/device_service"; }

std::string MacOf(std::size_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "02:00:5e:00:53:%02zx", number);
  return text;
}

std::unique_ptr<Device> NewDevice(std::size_t number, DeviceType* type, Protocol* protocol) {
  const std::string uri = ServiceUriOf(number);
  const std::string host = HostOf(number);
  const std::string mac = MacOf(number);
  const std::string uuid = "simulated-camera-" + std::to_string(number);
  auto device = std::make_unique<Device>(uri.c_str(), host.c_str(), type, protocol, "", true, mac.c_str(),
                                         uuid.c_str(), true, true, false, false);
  device->set_host_name("camera-" + std::to_string(number));
  device->set_manufacture("simulated");
  device->set_model_name("Simulated PTZ camera");
  device->set_firmware_version("1");
  device->update_http_uri();
  return device;
}

void StoreParameter(Movement* movement, const char* name, double value, double min, double max) {
  MovementParameter parameter(movement, name, value, min, max);
  Insert(&parameter, "movement parameter");
}

void StoreMovement(const Axis& axis, Movement* movement) {
  Insert(movement, "movement");
  StoreParameter(movement, "position", axis.position(), axis.limits().min, axis.limits().max);
  StoreParameter(movement, "speed", 0.0, 0.0, axis.limits().top_speed);
}

// An axis of a simulated camera moves to positions and at velocities, not by
// distances.
Movement NewMovement() { return Movement(true, true, false); }

std::uint32_t StorePtz(Device* device, const Camera& camera) {
  Movement pan = NewMovement();
  Movement tilt = NewMovement();
  Movement zoom = NewMovement();
  StoreMovement(camera.axis(kPan), &pan);
  StoreMovement(camera.axis(kTilt), &tilt);
  StoreMovement(camera.axis(kZoom), &zoom);
  Ptz ptz(device, &pan, &tilt, &zoom, camera.ptz_token(), "", true, static_cast<int>(camera.track_mode()));
  Insert(&ptz, "PTZ node");
  std::vector<Preset> presets;
  presets.emplace_back(&ptz, 1, "preset1", "Stage", 0.0, 0.0, 1.0);
  presets.emplace_back(&ptz, 2, "preset2", "Lectern", -35.0, 5.0, 6.0);
  presets.emplace_back(&ptz, 3, "preset3", "Audience", 120.0, -10.0, 2.0);
  if (Preset::AddAll(presets.data(), static_cast<int>(presets.size())) < 0) {
    throw std::runtime_error("the database takes no presets");
  }
  return ptz.id();
}

struct NamedValue {
  const char* name;
  double value;
  double min;
  double max;
};

void StoreMedia(Device* device, const MediaProfile& profile) {
  Media media(device, profile.token, "rtsp://" + device->address() + "/" + profile.token, "", true);
  Insert(&media, "media source");
  const VideoEncoder& video = profile.encoder;
  const ImageSettings& image = profile.image;
  const NamedValue values[] = {
      {"width", video.width, 0.0, video.width},           {"height", video.height, 0.0, video.height},
      {"frame_rate", video.frame_rate, 1.0, 60.0},        {"bit_rate", video.bit_rate, 64.0, 20000.0},
      {"brightness", image.brightness, 0.0, 100.0},       {"contrast", image.contrast, 0.0, 100.0},
      {"sharpness", image.sharpness, 0.0, 100.0},         {"auto_focus", image.auto_focus, 0.0, 1.0},
      {"backlight_mode", image.backlight_mode, 0.0, 1.0},
  };
  for (const NamedValue& value : values) {
    MediaParameter parameter(&media, value.name, value.value, value.min, value.max);
    Insert(&parameter, "media parameter");
  }
}

CameraIds StoreNewCamera(std::size_t number, const Camera& camera) {
  const auto type = Found<DeviceType>([](DeviceType** row) { return DeviceType::QueryByName(row, "camera"); });
  const auto protocol = Found<Protocol>([](Protocol** row) { return Protocol::QueryByName(row, "ONVIF"); });
  const std::unique_ptr<Device> device = NewDevice(number, type.get(), protocol.get());
  Insert(device.get(), "device");
  for (const MediaProfile& profile : camera.media_profiles()) StoreMedia(device.get(), profile);
  const std::uint32_t ptz = StorePtz(device.get(), camera);
  // The last step: tells that nothing is missing.
  device->set_is_setting_applied(true);
  if (Device::Update(*device) < 0) throw std::runtime_error("the database takes no device");
  return {device->id(), ptz};
}

std::set<std::uint32_t> UsedMovements() {
  // Not empty at first: only then is a failure told from a table without rows.
  std::vector<Ptz*> nodes = {new Ptz};
  if (Ptz::QueryAll(&nodes, 0, 65535) < 0) throw std::runtime_error("the database does not tell its PTZ nodes");
  std::set<std::uint32_t> used;
  for (const Ptz* node : nodes) used.insert({node->pan_id(), node->tilt_id(), node->zoom_id()});
  VptzModel::CleanQuery(&nodes);
  return used;
}

// Movements refer to nothing, so they don't go with their device.
void RemoveUnusedMovements() {
  std::vector<Movement*> movements;
  Movement::QueryAll(&movements, 0, 65535);
  const std::set<std::uint32_t> used = UsedMovements();
  for (const Movement* movement : movements) {
    if (used.count(movement->id()) == 0) Movement::Remove(movement->id());
  }
  VptzModel::CleanQuery(&movements);
}

// The device comes last: while it is there the next start knows that something
// is to be removed.
void RemoveHalfWritten(const Device& device) {
  Ptz::RemoveByDevice(device.id());
  RemoveUnusedMovements();
  Device::Remove(device.id());
}

}  // namespace

bool OpenDatabase(const std::string& path, const std::string& seed_file) {
  return VptzModel::Instance().Initialize(path, "vptz", seed_file) == 0;
}

CameraIds StoreCamera(std::size_t number, const Camera& camera) {
  const auto device =
      Found<Device>([&](Device** row) { return Device::QueryByServiceUri(row, ServiceUriOf(number)); });
  if (device == nullptr) return StoreNewCamera(number, camera);
  const auto ptz =
      Found<Ptz>([&](Ptz** row) { return Ptz::QueryByNode(row, device->id(), camera.ptz_token()); });
  if (device->is_setting_applied() && ptz != nullptr) return {device->id(), ptz->id()};
  // The service was killed while it wrote: what is there goes, and is written anew.
  RemoveHalfWritten(*device);
  return StoreNewCamera(number, camera);
}

void StoreCameras(World& world) {
  for (std::size_t number = 1; number <= world.size(); ++number) {
    world.SetIds(number, StoreCamera(number, *world.FindCamera(static_cast<std::uint32_t>(number))));
  }
}

}  // namespace vptzd
