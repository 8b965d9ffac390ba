#include <vptz/vptz_device.h>

#include <algorithm>

#include <vptz/vptz_client.h>

#include "no_throw.h"
#include "vptz_device/database_rows.h"

namespace {

template <class Profile>
Profile* Find(std::vector<Profile>& profiles, int id) {
  const auto found = std::find_if(profiles.begin(), profiles.end(), [&](const Profile& profile) {
    return profile.id == static_cast<std::uint32_t>(id);
  });
  return found == profiles.end() ? nullptr : &*found;
}

// Asks for the live state of each row's profile. The number of rows, or -1 when
// a row has no profile in the list.
template <class Row, class Profile>
int LoadProfiles(const std::vector<Row>& rows, std::vector<Profile>& profiles, unsigned int device_id,
                 VptzClient* client,
                 int (VptzClient::*query)(unsigned int, const std::string&, Profile*, int)) {
  bool complete = true;
  for (const Row& row : rows) {
    Profile* const profile = Find(profiles, static_cast<int>(row.id));
    if (profile == nullptr) {
      complete = false;
    } else if (client != nullptr) {
      (client->*query)(device_id, row.node, profile, 0);
    }
  }
  return complete ? static_cast<int>(rows.size()) : -1;
}

}  // namespace

void CVptzDevice::Init() {}

void CVptzDevice::Deinit() {}

void CVptzDevice::SetVptzClient(VptzClient* client) { client_ = client; }

VptzPtzData* CVptzDevice::GetPtzById(int id) { return Find(ptz_list, id); }

VptzMediaData* CVptzDevice::GetMediaById(int id) { return Find(media_list, id); }

int CVptzDevice::LoadPtzProfiles() {
  return vptz::NoThrow(-1, [this] {
    return LoadProfiles(vptz::DatabaseRows().Ptz(id), ptz_list, id, client_, &VptzClient::QueryPtzProfiles);
  });
}

int CVptzDevice::LoadMediaProfiles() {
  return vptz::NoThrow(-1, [this] {
    return LoadProfiles(vptz::DatabaseRows().Media(id), media_list, id, client_,
                        &VptzClient::QueryMediaProfiles);
  });
}
