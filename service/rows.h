// Changes in the rows of a camera that is known already. Each throws
// StorageError when the database does not take it.
#ifndef VPTZ_SERVICE_ROWS_H
#define VPTZ_SERVICE_ROWS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <vptz/model/device.h>

#include "camera/camera.h"
#include "world.h"

namespace vptzd {

// Changes the row of a device and writes it.
void ChangeDevice(std::uint32_t device, const std::function<void(Device&)>& change);

// Sets the protocol by which a device is controlled. False when there is no row
// of that name.
bool ChangeProtocol(std::uint32_t device, const std::string& protocol);
bool IsProtocol(const std::string& name);

// Whether the texts can be stored as credentials; some cannot, such as those
// that are no UTF-8.
bool CanStore(const Credentials& credentials);

// Credentials as they are stored: a JSON text with "account" and "credentials".
std::string CredentialsText(const Credentials& credentials);

// Stores credentials; none takes what is stored away.
void StoreLogin(std::uint32_t device, const std::optional<Credentials>& credentials);

// What is stored; empty for none.
Credentials StoredCredentials(const Device& device);

void StorePreset(std::uint32_t ptz, const StoredPosition& preset);
void ForgetPreset(std::uint32_t ptz, const std::string& token);
// Makes the node's rows those of the list. Whether anything was to be changed.
bool StorePresets(std::uint32_t ptz, const PresetList& presets);
PresetList StoredPresets(std::uint32_t ptz, const std::string& protocol);

void StoreTrackMode(const CameraIds& ids, std::uint32_t mode);
void StoreImage(std::uint32_t media, const ImageSettings& image);
// What the rows hold instead of the factory settings.
ImageSettings StoredImage(std::uint32_t media, const ImageSettings& factory);

// Writes what an axis is and where it stands.
void StoreAxis(std::uint32_t movement, const Axis& axis);
void StoreAxes(std::uint32_t ptz, const Camera& camera);

}  // namespace vptzd

#endif
