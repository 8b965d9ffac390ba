// Changes in the rows of a camera that is known already. Each throws
// StorageError when the database does not take it.
#ifndef VPTZ_SERVICE_STORE_CHANGES_H
#define VPTZ_SERVICE_STORE_CHANGES_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vptz/model/device.h>
#include <vptz/model/movement_parameter.h>

#include "drivers/camera_record.h"
#include "store/camera_ids.h"

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
// Whether anything was to be changed.
bool StoreImage(std::uint32_t media, const ImageSettings& image);
// What the rows hold instead of the factory settings.
ImageSettings StoredImage(std::uint32_t media, const ImageSettings& factory);

// The rows that tell what axes are and where they stand, as far as they are to
// be changed.
class AxisRows {
 public:
  // Adds what the node's rows have otherwise than the camera.
  void Compare(std::uint32_t ptz, const Abilities& abilities, const PerAxis<double>& position);

  // Writes them in one transaction.
  void Store() const;

 private:
  void CompareParameter(std::uint32_t movement, const char* name, double value, double min, double max);

  std::vector<std::unique_ptr<MovementParameter>> changed_;
};

// Writes what the axes of a camera are and where they stand.
void StoreAxes(std::uint32_t ptz, const Abilities& abilities, const PerAxis<double>& position);

}  // namespace vptzd

#endif
