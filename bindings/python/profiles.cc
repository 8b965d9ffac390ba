#include <vptz/model/media.h>
#include <vptz/model/ptz.h>

#include "binding.h"

namespace vptz_python {
namespace {

// The live state of a profile, with the token and the row id that the library
// leaves to its caller.
template <class Row, class Profile>
Profile Live(Client& client, unsigned int device_id, const std::string& token, int timeout,
             int (VptzClient::*query)(unsigned int, const std::string&, Profile*, int)) {
  auto [result, profile] = client.Run([=](VptzClient& self) {
    Profile live;
    live.node = token;
    const int status = (self.*query)(device_id, token, &live, timeout);
    Row* row = nullptr;
    if (status >= 0 && Row::QueryByNode(&row, device_id, token) == 0 && row != nullptr) live.id = row->id();
    delete row;
    return std::make_pair(status, std::move(live));
  });
  AnswerOrRaise(result);
  return std::move(profile);
}

VptzMediaData MediaProfile(Client& client, unsigned int device_id, const std::string& token, int timeout) {
  return Live<Media>(client, device_id, token, timeout, &VptzClient::QueryMediaProfiles);
}

}  // namespace

VptzPtzData PtzProfile(Client& client, unsigned int device_id, const std::string& token, int timeout) {
  return Live<Ptz>(client, device_id, token, timeout, &VptzClient::QueryPtzProfiles);
}

void AddProfiles(ClientClass& client, DeviceClass& device) {
  client
      .def("ptz_profile", PtzProfile, py::arg("device_id"), py::arg("token"), Timeout(),
           "The live state of a PTZ profile, named by its token (PtzProfile.node), and its id. Presets and "
           "is_enable are in Device.ptz_list.")
      .def("media_profile", MediaProfile, py::arg("device_id"), py::arg("token"), Timeout(),
           "The live state of a media profile, named by its token (MediaProfile.node), and its id. Addresses, "
           "ranges and is_enable are in Device.media_list.");
  device
      .def("load_ptz_profiles", Load(&CVptzDevice::LoadPtzProfiles),
           "Writes the live state of the PTZ profiles into ptz_list. Their number.")
      .def("load_media_profiles", Load(&CVptzDevice::LoadMediaProfiles),
           "Writes the live state of the media profiles into media_list. Their number.");
}

}  // namespace vptz_python
