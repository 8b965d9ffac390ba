#include "camera.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <vector>

#include <unistd.h>

#include <vptz/model/vptzmodel.h>

#include "failures.h"
#include "library_files.h"

namespace vptzctl {
namespace {

bool IsId(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Null also for a number that is too large for an id.
const CVptzDevice* ById(VptzClient& client, const std::string& text) {
  std::uint32_t id = 0;
  const char* const end = text.data() + text.size();
  const bool fits = std::from_chars(text.data(), end, id).ec == std::errc();
  return fits ? client.QueryDeviceById(static_cast<int>(id)) : nullptr;
}

std::vector<const CVptzDevice*> Find(VptzClient& client, const std::string& text) {
  std::vector<const CVptzDevice*> found;
  if (IsId(text)) {
    const CVptzDevice* device = ById(client, text);
    if (device != nullptr) found.push_back(device);
    return found;
  }
  for (const CVptzDevice& device : *client.QueryDeviceAll()) {
    if (device.host_name == text) found.push_back(&device);
  }
  return found;
}

[[noreturn]] void FailUnknown(const std::string& text, int known) {
  const std::string reason =
      IsId(text) ? "no camera has the id " + text : "no camera is named \"" + text + "\"";
  throw CommandError(
      {"unknown_camera",
       reason + " in the database, which knows " + std::to_string(known) + "; 'vptzctl device list' shows them",
       ExitCode::kDatabase});
}

[[noreturn]] void FailAmbiguous(const std::string& text, const std::vector<const CVptzDevice*>& found) {
  std::string ids;
  for (const CVptzDevice* device : found) ids += (ids.empty() ? "" : ", ") + std::to_string(device->id);
  throw CommandError({"ambiguous_camera", "several cameras are named \"" + text + "\": " + ids + "; give an id",
                      ExitCode::kDatabase});
}

bool IsThere(const char* path) { return access(path, F_OK) == 0; }

// "/etc/vptz.conf is missing"
std::string StateOf(const char* path, int wanted) {
  const std::string file = path;
  if (access(path, wanted) == 0) return file + " is there";
  return file + (errno == ENOENT ? " is missing" : std::string(" cannot be used: ") + std::strerror(errno));
}

}  // namespace

CVptzDevice FindCamera(VptzClient& client, const std::string& text) {
  RequireDatabase();
  const std::vector<const CVptzDevice*> found = Find(client, text);
  if (found.empty()) FailUnknown(text, client.QueryDeviceCount());
  if (found.size() > 1) FailAmbiguous(text, found);
  return *found.front();
}

void RequireDatabase() {
  if (VptzModel::Instance().IsConnected()) return;
  throw CommandError(
      {"no_database",
       "the library has no database: its configuration file " + StateOf(ConfigFile(), R_OK) +
           ", its database " + StateOf(DatabaseFile(), R_OK | W_OK) +
           (IsThere(DatabaseFile()) ? "; with -v the log tells more" : "; vptzd makes it when it starts"),
       ExitCode::kDatabase});
}

}  // namespace vptzctl
