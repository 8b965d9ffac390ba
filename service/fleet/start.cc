#include "fleet/start.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>

#include "log.h"
#include "store/changes.h"
#include "store/database.h"
#include "store/kept.h"
#include "store/row_access.h"

namespace vptzd {
namespace {

constexpr unsigned kAll = 65535;

// The camera takes on what its rows hold. What they tell of its axes is not true
// any more; the rows that are to be changed are added to `axes`.
void TakeOnRows(const Device& device, const CameraIds& ids, Member* member, AxisRows* axes) {
  Camera& camera = member->camera;
  if (const Protocol* protocol = device.protocol()) camera.description().protocol = protocol->name();
  camera.presets() = StoredPresets(ids.ptz, camera.description().protocol);
  camera.set_logged_in(device.authorized());
  const auto node = FoundRow<Ptz>([&](Ptz** row) { return Ptz::QueryById(row, ids.ptz); });
  if (node == nullptr) throw StorageError("the database has no such PTZ node");
  if (const auto home = StoredHome(ids.ptz)) camera.SetHome(*home);
  camera.set_track_mode(static_cast<std::uint32_t>(node->track_mode()));
  for (std::size_t i = 0; i < ids.media.size(); ++i) {
    const MediaProfile& profile = camera.media_profiles()[i];
    camera.SetImage(profile.token, StoredImage(ids.media[i], profile.image));
  }
  member->ids = ids;  // from here on its rows are made what it is
  axes->Compare(ids.ptz, camera.abilities(), camera.position());
}

// The camera that is simulated for a device: it wants what its row knows.
CameraDescription DescribedBy(const Device& device) {
  CameraDescription camera(IdentityOf(device));
  camera.credentials = StoredCredentials(device);
  return camera;
}

void WarnOfTooMany(const Device& device) {
  VPTZD_LOG(LogLevel::kWarning, "the device %u is one more than can be looked after", device.id());
}

// A camera that is known by its rows, which stay as they are, whole or not.
void RestoreUndriven(const Device& device, const CameraDescription& description, Fleet& fleet) {
  Member* const member = fleet.Add(description);
  if (member == nullptr) {
    WarnOfTooMany(device);
    return;
  }
  member->driven = false;
  member->ids = RowsOf(device.id());
  member->camera.set_logged_in(device.authorized());
  VPTZD_LOG(LogLevel::kNotice, "the device %u has rows and nothing that commands it", device.id());
}

// False for a device with rows missing: the service was killed while it added it.
bool Restore(const Device& device, Fleet& fleet, AxisRows* axes) {
  const CameraDescription description = DescribedBy(device);
  if (!fleet.simulated()) {
    RestoreUndriven(device, description, fleet);
    return true;
  }
  const CameraIds ids = IdsOf(device, Camera(description).Record());
  if (ids.device == 0) return false;
  if (Member* const member = fleet.Add(description)) {
    TakeOnRows(device, ids, member, axes);
  } else {
    WarnOfTooMany(device);
  }
  return true;
}

// A full disk is no reason not to start: the cameras that are there can be moved.
template <class Error, class Storing>
void TryAtStart(Storing storing) {
  try {
    storing();
  } catch (const Error& error) {
    VPTZD_LOG(LogLevel::kError, "not stored at the start: %s", error.what());
  }
}

// A listed camera that has not all its rows.
struct Unstored {
  Member* member;
  std::uint32_t
      leftover;  // device whose rows go: the service was killed while it removed or wrote them; 0: none
  bool wanted;   // it is to be stored
};

// A listed camera takes on its rows, unless it has been removed.
std::optional<Unstored> Begin(Member* member, AxisRows* axes) {
  const CameraDescription& description = member->camera.description();
  const auto device = DeviceAt(description.service_uri);
  const bool removed = WasRemoved(description.service_uri);
  if (device != nullptr && !removed) {
    const CameraIds ids = IdsOf(*device, member->camera.Record());
    if (ids.device != 0) {
      TakeOnRows(*device, ids, member, axes);
      return std::nullopt;
    }
  }
  return Unstored{member, device == nullptr ? 0 : device->id(),
                  !removed && (device != nullptr || description.known)};
}

// The listed cameras that have not all their rows; the others take on theirs.
std::vector<Unstored> BeginAll(Fleet& fleet, AxisRows* axes) {
  std::vector<Unstored> unstored;
  const StableRows nothing_is_missed;
  for (const auto& member : fleet.members()) {
    TryAtStart<StorageError>([&] {
      if (const auto one = Begin(member.get(), axes)) unstored.push_back(*one);
    });
  }
  return unstored;
}

// Gives those cameras rows; they stay unknown when the database does not take them.
void StoreNew(const std::vector<Member*>& members, const StoringTold& told) {
  std::vector<CameraRecord> cameras;
  cameras.reserve(members.size());
  for (const Member* member : members) cameras.push_back(member->camera.Record());
  const std::vector<CameraIds> ids = StoreNewCameras(cameras, told);
  for (std::size_t i = 0; i < ids.size(); ++i) members[i]->ids = ids[i];
}

void RestoreFollowers(Fleet& fleet) {
  for (const auto& member : fleet.members()) {
    if (member->known()) member->follower = StoredFollower(member->ids.device);
  }
}

}  // namespace

void StoreCameras(Fleet& fleet, const StoringTold& told) {
  std::vector<Member*> fresh;
  AxisRows axes;
  for (const Unstored& camera : BeginAll(fleet, &axes)) {
    TryAtStart<StorageError>([&] {
      if (camera.leftover != 0) RemoveCamera(camera.leftover);
      if (camera.wanted) fresh.push_back(camera.member);
    });
  }
  const auto known = [](const auto& member) { return member->known(); };
  if (std::none_of(fleet.members().begin(), fleet.members().end(), known)) {
    StoreNew(fresh, told);
  } else {
    TryAtStart<NoRoom>([&] { StoreNew(fresh, told); });
  }
  TryAtStart<NoRoom>([&] { axes.Store(); });
}

void RestoreAdditions(Fleet& fleet) {
  AxisRows axes;
  std::vector<std::uint32_t> leftovers;
  {
    const StableRows nothing_is_missed;
    for (const std::string& port : StoredPorts()) fleet.ports().Add(port);
    const auto devices =
        FoundRows<Device>([](std::vector<Device*>* rows) { return Device::QueryAll(rows, 0, kAll); });
    for (const auto& device : devices) {
      if (fleet.MemberOfService(device->service_uri()) != nullptr) continue;
      TryAtStart<StorageError>([&] {
        if (!Restore(*device, fleet, &axes)) leftovers.push_back(device->id());
      });
    }
    RestoreFollowers(fleet);
  }
  for (const std::uint32_t device : leftovers) TryAtStart<StorageError>([&] { RemoveCamera(device); });
  TryAtStart<NoRoom>([&] { axes.Store(); });
}

}  // namespace vptzd
