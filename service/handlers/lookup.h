// How handlers that store find the camera that their command is about.
#ifndef VPTZ_SERVICE_HANDLERS_LOOKUP_H
#define VPTZ_SERVICE_HANDLERS_LOOKUP_H

#include <cstdint>
#include <string>

#include <vptz/vptz.pb.h>

#include "handlers/context.h"

namespace vptzd {

enum class Need {
  kAnswer,  // the camera is there
  kLogin    // and the service is logged in to it
};

// Each gives the member that the command's sub-message names. kBadRequest when
// the command has none, and the refusals of Fleet::CheckThere and
// Fleet::CheckUsable. Only for handlers that store: the member stays, and its ids
// may be read without the lock; its camera may not.
Status LookUpDevice(Context& context, const tutorial::VptzCommand& command, Need need, Member** member);
Status LookUpPtz(Context& context, const tutorial::VptzCommand& command, Need need, Member** member);

// The token of a media profile of that member.
std::string MediaTokenOf(const Member& member, std::uint32_t media);

// Also the token of the media profile.
Status LookUpMedia(Context& context, const tutorial::VptzCommand& command, std::uint32_t media, Need need,
                   Member** member, std::string* token);

}  // namespace vptzd

#endif
