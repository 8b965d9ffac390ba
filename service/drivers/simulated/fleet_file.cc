#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "drivers/addresses.h"
#include "drivers/protocols.h"
#include "drivers/simulated/document.h"
#include "drivers/simulated/fault_list.h"
#include "drivers/simulated/fields.h"
#include "drivers/simulated/simulated_fleet.h"

namespace vptzd {
namespace {

constexpr double kMaxPosition = 1e6;
constexpr const char* kAxisNames[] = {"pan", "tilt", "zoom"};

void ReadAxis(const Value& value, const std::string& what, std::optional<Axis::Limits>* axis) {
  if (value.kind == Value::Kind::kNull) {
    axis->reset();
    return;
  }
  Fields fields(value, what);
  fields.Take("min", &(*axis)->min, -kMaxPosition, kMaxPosition);
  fields.Take("max", &(*axis)->max, -kMaxPosition, kMaxPosition);
  fields.Take("speed", &(*axis)->top_speed, 1e-3, kMaxPosition);
  fields.Take("acceleration", &(*axis)->acceleration, 1e-3, kMaxPosition);
  fields.ExpectNothingMore();
  if ((*axis)->min >= (*axis)->max)
    throw DocumentError(value.line, "the \"min\" of " + what + " is not below its \"max\"");
}

StoredPosition ReadPreset(const Value& value, const CameraDescription& camera, std::uint32_t id) {
  Fields fields(value, "a preset");
  StoredPosition preset;
  preset.id = id;
  preset.token = "preset" + std::to_string(id);
  fields.Take("name", &preset.name);
  fields.Take("token", &preset.token);
  for (std::size_t i = 0; i < preset.position.size(); ++i) {
    const auto& limits = camera.axes[i];
    if (!limits) continue;
    preset.position[i] = std::clamp(0.0, limits->min, limits->max);
    fields.Take(kAxisNames[i], &preset.position[i], limits->min, limits->max);
  }
  fields.ExpectNothingMore();
  return preset;
}

void ReadPresets(const Value& list, CameraDescription* camera) {
  if (list.items.size() > PresetList::kMax)
    throw DocumentError(list.line, "a camera keeps at most 256 presets");
  std::uint32_t id = ProtocolNamed(camera->protocol).preset_shift;
  for (const Value& value : list.items) {
    const StoredPosition preset = ReadPreset(value, *camera, ++id);
    const auto same = [&](const StoredPosition& other) { return other.token == preset.token; };
    if (preset.token.empty()) throw DocumentError(value.line, "a preset's token is not empty");
    if (std::any_of(camera->presets.begin(), camera->presets.end(), same)) {
      throw DocumentError(value.line, "the token \"" + preset.token + "\" is there twice");
    }
    camera->presets.push_back(preset);
  }
}

std::string TakeProtocol(Fields& fields) {
  std::string protocol = "ONVIF";
  fields.Take("protocol", &protocol);
  if (!HasProtocol(protocol)) {
    fields.Fail(*fields.Take("protocol"), "protocol", "is to be " + ProtocolNames());
  }
  return protocol;
}

// Fills in what is the same for all cameras of an entry.
CameraDescription ReadCamera(Fields& fields, const std::string& protocol, const std::string& address) {
  CameraDescription camera = PlainCamera(protocol, address);
  fields.Take("manufacturer", &camera.manufacturer);
  fields.Take("model", &camera.model);
  fields.Take("firmware", &camera.firmware);
  fields.Take("user", &camera.credentials.user);
  fields.Take("password", &camera.credentials.password);
  fields.Take("known", &camera.known);
  fields.Take("removable", &camera.removable);
  fields.Take("delay", &camera.delay);
  for (std::size_t i = 0; i < camera.axes.size(); ++i) {
    const Value* axis = fields.Take(kAxisNames[i]);
    if (axis != nullptr) ReadAxis(*axis, std::string("axis ") + kAxisNames[i], &camera.axes[i]);
  }
  if (const Value* presets = fields.TakeList("presets")) ReadPresets(*presets, &camera);
  return camera;
}

// A serial camera is given whole; network cameras may be several.
void CheckAddress(const Fields& fields, const Value& at, const std::string& protocol,
                  const std::string& address, int count) {
  if (!address.empty() && count > 1) fields.Fail(at, "address", "cannot be that of several cameras");
  if (!ProtocolNamed(protocol).serial) return;
  if (count > 1) fields.Fail(at, "count", "is 1 for a serial camera");
  const auto serial = ReadSerialAddress(address);
  if (!serial) fields.Fail(at, "address", "is to be rs232://PORT/LINE/BAUD_RATE/UNIT");
  if (!IsBaudRate(serial->baud_rate)) fields.Fail(at, "address", "has a baud rate that no serial line knows");
}

void AddCamera(const Value& at, const CameraDescription& camera, SimulatedFleet* fleet) {
  if (fleet->cameras.size() == SimulatedFleet::kMaxCameras)
    throw DocumentError(at.line, "a fleet has at most 256 cameras");
  for (const CameraDescription& other : fleet->cameras) {
    if (IsSamePlace(other.service_uri, camera.service_uri)) {
      throw DocumentError(at.line, "another camera has the address " + camera.address + " already");
    }
  }
  fleet->cameras.push_back(camera);
}

void GivePlace(CameraDescription* camera, const std::string& address, std::size_t number) {
  const CameraDescription numbered = BuiltInCamera(number);
  const bool serial = ProtocolNamed(camera->protocol).serial;
  camera->address = serial ? ReadSerialAddress(address)->port : address.empty() ? numbered.address : address;
  camera->service_uri = serial ? address : ProtocolNamed(camera->protocol).ServiceUri(camera->address);
  camera->mac = serial ? camera->address : numbered.mac;
  camera->uuid = numbered.uuid;
  camera->name = numbered.name;
}

void ReadCameras(const Value& value, SimulatedFleet* fleet) {
  Fields fields(value, "a camera");
  int count = 1;
  fields.Take("count", &count, 1, static_cast<int>(SimulatedFleet::kMaxCameras));
  const std::string protocol = TakeProtocol(fields);
  std::string address;
  std::string name;
  fields.Take("address", &address);
  fields.Take("name", &name);
  CheckAddress(fields, value, protocol, address, count);
  CameraDescription camera = ReadCamera(fields, protocol, address);
  fields.ExpectNothingMore();
  for (int i = 1; i <= count; ++i) {
    GivePlace(&camera, address, fleet->cameras.size() + 1);
    if (!name.empty()) camera.name = count == 1 ? name : name + "-" + std::to_string(i);
    AddCamera(value, camera, fleet);
  }
}

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno));
  }
  std::string text(std::istreambuf_iterator<char>(file), {});
  if (file.bad()) throw std::runtime_error("cannot read " + path);
  return text;
}

}  // namespace

SimulatedFleet ReadFleet(const std::string& text, std::size_t known) {
  const Value document = ParseDocument(text);
  Fields fields(document, "the fleet");
  SimulatedFleet fleet = BuiltInFleet(known);
  fields.Take("search_time", &fleet.search_time);
  if (const Value* cameras = fields.TakeList("cameras")) {
    fleet.cameras.clear();
    for (const Value& camera : cameras->items) ReadCameras(camera, &fleet);
  }
  if (const Value* faults = fields.TakeList("faults")) fleet.faults = ReadFaults(*faults, fleet.cameras.size());
  fields.ExpectNothingMore();
  return fleet;
}

SimulatedFleet ReadFleetFile(const std::string& path, std::size_t known) {
  const std::string text = ReadText(path);
  try {
    return ReadFleet(text, known);
  } catch (const DocumentError& error) {
    throw std::runtime_error(path + ":" + std::to_string(error.line()) + ": " + error.what());
  }
}

}  // namespace vptzd
