// Finds the camera that a command line names.
#ifndef VPTZCTL_CAMERA_H
#define VPTZCTL_CAMERA_H

#include <string>

#include <vptz/vptz_client.h>

namespace vptzctl {

// The device with that id or, when the text is no number, with that name: the
// name that it has in the network, compared byte by byte. Looks only in the
// database: the client must not be connected, or each device would be asked
// about. Throws CommandError.
CVptzDevice FindCamera(VptzClient& client, const std::string& text);

// Throws CommandError when the library has no database.
void RequireDatabase();

}  // namespace vptzctl

#endif
