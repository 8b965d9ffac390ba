#include "store/device_rows.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
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
#include <vptz/model/device-odb.hxx>
#include <vptz/model/media-odb.hxx>
#include <vptz/model/media_parameter-odb.hxx>
#include <vptz/model/movement-odb.hxx>
#include <vptz/model/movement_parameter-odb.hxx>
#include <vptz/model/preset-odb.hxx>
#include <vptz/model/ptz-odb.hxx>

#include "drivers/protocols.h"
#include "log.h"
#include "store/changes.h"
#include "store/database.h"
#include "store/row_access.h"

namespace vptzd {
namespace {

constexpr unsigned kAll = 65535;

std::unique_ptr<Device> NewDevice(const CameraRecord& camera, DeviceType* type, Protocol* protocol) {
  const Identity& identity = camera.identity;
  const CameraState& state = camera.state;
  auto device = std::make_unique<Device>(identity.service_uri.c_str(), identity.address.c_str(), type, protocol,
                                         "", state.logged_in, identity.mac.c_str(), identity.uuid.c_str(), true,
                                         identity.removable, true, false);
  device->set_host_name(identity.name);
  device->set_manufacture(identity.manufacturer);
  device->set_model_name(identity.model);
  device->set_firmware_version(identity.firmware);
  if (state.logged_in && !state.credentials.empty()) {
    device->set_authorization(CredentialsText(state.credentials));
  }
  device->update_http_uri();
  return device;
}

template <class Row>
void InsertRows(Transaction& transaction, std::vector<Row>* rows, const char* what) {
  for (Row& row : *rows) transaction.Insert(&row, what);
}

// An axis moves to positions and at velocities, not by distances. None for an axis
// that the camera does not have.
std::unique_ptr<Movement> InsertMovement(Transaction& transaction, const CameraRecord& camera, AxisIndex index,
                                         std::vector<MovementParameter>* parameters) {
  const auto& range = camera.abilities.axes[index];
  if (!range) return nullptr;
  auto movement = std::make_unique<Movement>(true, true, false);
  transaction.Insert(movement.get(), "movement");
  parameters->emplace_back(movement.get(), "position", camera.state.position[index], range->min, range->max);
  parameters->emplace_back(movement.get(), "speed", 0.0, 0.0, range->top_speed);
  return movement;
}

std::uint32_t InsertPtz(Transaction& transaction, Device* device, const CameraRecord& camera) {
  std::vector<MovementParameter> parameters;
  const auto pan = InsertMovement(transaction, camera, kPan, &parameters);
  const auto tilt = InsertMovement(transaction, camera, kTilt, &parameters);
  const auto zoom = InsertMovement(transaction, camera, kZoom, &parameters);
  InsertRows(transaction, &parameters, "movement parameter");
  Ptz ptz(device, pan.get(), tilt.get(), zoom.get(), camera.abilities.ptz_token, "", true,
          static_cast<int>(camera.state.track_mode));
  transaction.Insert(&ptz, "PTZ node");
  std::vector<Preset> presets;
  for (const StoredPosition& preset : camera.state.presets) {
    presets.emplace_back(&ptz, preset.id, preset.token, preset.name, preset.position[kPan],
                         preset.position[kTilt], preset.position[kZoom]);
  }
  InsertRows(transaction, &presets, "preset");
  return ptz.id();
}

struct NamedValue {
  const char* name;
  double value;
  double min;
  double max;
};

std::string StreamUri(const Identity& camera, const std::string& token) {
  return ProtocolNamed(camera.protocol).serial ? "" : "rtsp://" + camera.address + "/" + token;
}

std::uint32_t InsertMedia(Transaction& transaction, Device* device, const Identity& camera,
                          const MediaProfile& profile) {
  Media media(device, profile.token, StreamUri(camera, profile.token), "", true);
  transaction.Insert(&media, "media source");
  const VideoEncoder& video = profile.encoder;
  const ImageSettings& image = profile.image;
  const NamedValue values[] = {
      {"width", video.width, 0.0, video.width},           {"height", video.height, 0.0, video.height},
      {"frame_rate", video.frame_rate, 1.0, 60.0},        {"bit_rate", video.bit_rate, 64.0, 20000.0},
      {"brightness", image.brightness, 0.0, 100.0},       {"contrast", image.contrast, 0.0, 100.0},
      {"sharpness", image.sharpness, 0.0, 100.0},         {"auto_focus", image.auto_focus, 0.0, 1.0},
      {"backlight_mode", image.backlight_mode, 0.0, 1.0},
  };
  std::vector<MediaParameter> parameters;
  for (const NamedValue& value : values) {
    parameters.emplace_back(&media, value.name, value.value, value.min, value.max);
  }
  InsertRows(transaction, &parameters, "media parameter");
  return media.id();
}

// The rows that a new device refers to.
struct Kind {
  std::unique_ptr<DeviceType> type;
  std::unique_ptr<Protocol> protocol;
};

Kind KindOf(const Identity& camera) {
  const char* type = ProtocolNamed(camera.protocol).serial ? "controller" : "camera";
  return {FoundRow<DeviceType>([&](DeviceType** row) { return DeviceType::QueryByName(row, type); }),
          FoundRow<Protocol>([&](Protocol** row) { return Protocol::QueryByName(row, camera.protocol); })};
}

CameraIds InsertCamera(Transaction& transaction, const CameraRecord& camera, const Kind& kind) {
  const std::unique_ptr<Device> device = NewDevice(camera, kind.type.get(), kind.protocol.get());
  transaction.Insert(device.get(), "device");
  CameraIds ids;
  ids.device = device->id();
  for (const MediaProfile& profile : camera.state.media) {
    ids.media.push_back(InsertMedia(transaction, device.get(), camera.identity, profile));
  }
  ids.ptz = InsertPtz(transaction, device.get(), camera);
  return ids;
}

std::set<std::uint32_t> UsedMovements() {
  std::set<std::uint32_t> used;
  const auto nodes = FoundRows<Ptz>([](std::vector<Ptz*>* rows) { return Ptz::QueryAll(rows, 0, kAll); });
  for (const auto& node : nodes) used.insert({node->pan_id(), node->tilt_id(), node->zoom_id()});
  return used;
}

// Movements refer to nothing, so they don't go with their device.
void RemoveUnusedMovements() {
  const auto movements =
      FoundRows<Movement>([](std::vector<Movement*>* rows) { return Movement::QueryAll(rows, 0, kAll); });
  const std::set<std::uint32_t> used = UsedMovements();
  for (const auto& movement : movements) {
    if (used.count(movement->id()) == 0) Movement::Remove(movement->id());
  }
}

}  // namespace

std::vector<CameraIds> StoreNewCameras(const std::vector<CameraRecord>& cameras, const StoringTold& told) {
  std::vector<CameraIds> ids;
  if (cameras.empty()) return ids;
  std::vector<Kind> kinds;
  kinds.reserve(cameras.size());
  for (const CameraRecord& camera : cameras) kinds.push_back(KindOf(camera.identity));
  told(1, cameras.size());
  Transaction transaction;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    told(i + 1, cameras.size());
    ids.push_back(InsertCamera(transaction, cameras[i], kinds[i]));
  }
  transaction.Commit();
  return ids;
}

CameraIds IdsOf(const Device& device, const CameraRecord& camera) {
  if (!device.is_setting_applied()) return {};
  CameraIds ids;
  const auto ptz =
      FoundRow<Ptz>([&](Ptz** row) { return Ptz::QueryByNode(row, device.id(), camera.abilities.ptz_token); });
  if (ptz == nullptr) return {};
  for (const MediaProfile& profile : camera.state.media) {
    const auto media =
        FoundRow<Media>([&](Media** row) { return Media::QueryByNode(row, device.id(), profile.token); });
    if (media == nullptr) return {};
    ids.media.push_back(media->id());
  }
  ids.device = device.id();
  ids.ptz = ptz->id();
  return ids;
}

CameraIds RowsOf(std::uint32_t device) {
  CameraIds ids;
  ids.device = device;
  const auto nodes =
      FoundRows<Ptz>([&](std::vector<Ptz*>* rows) { return Ptz::QueryByDevice(rows, device, 0, kAll); });
  if (!nodes.empty()) ids.ptz = nodes.front()->id();
  const auto sources =
      FoundRows<Media>([&](std::vector<Media*>* rows) { return Media::QueryByDevice(rows, device, 0, kAll); });
  for (const auto& source : sources) ids.media.push_back(source->id());
  return ids;
}

std::unique_ptr<Device> DeviceAt(const std::string& service_uri) {
  return FoundRow<Device>([&](Device** row) { return Device::QueryByServiceUri(row, service_uri); });
}

Identity IdentityOf(const Device& device) {
  Identity camera;
  if (const Protocol* protocol = device.protocol()) camera.protocol = protocol->name();
  camera.address = device.address();
  camera.service_uri = device.service_uri();
  camera.name = device.host_name();
  camera.mac = device.mac();
  camera.uuid = device.uuid();
  camera.manufacturer = device.manufacture();
  camera.model = device.model_name();
  camera.firmware = device.firmware_version();
  camera.removable = device.deletable();
  return camera;
}

CameraIds StoreCamera(const CameraRecord& camera) {
  std::unique_ptr<Device> device;
  CameraIds ids;
  {
    const StableRows nothing_is_missed;
    device = DeviceAt(camera.identity.service_uri);
    if (device != nullptr) ids = IdsOf(*device, camera);
  }
  if (ids.device != 0) return ids;
  // The service was killed while it wrote: what is there goes, and is written anew.
  if (device != nullptr) RemoveCamera(device->id());
  return StoreNewCameras({camera}, [](std::size_t, std::size_t) {}).front();
}

// The device comes last: while it is there the next start knows that something
// is to be removed.
void RemoveCamera(std::uint32_t device) {
  Ptz::RemoveByDevice(device);
  RemoveUnusedMovements();
  if (Device::Remove(device) < 0) throw StorageError("the database keeps a device");
}

}  // namespace vptzd
