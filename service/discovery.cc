#include "handlers.h"
#include "request.h"

namespace vptzd {

tutorial::VptzResponse GetStatus(World&, const tutorial::VptzCommand&) { return Answer(Status::kDone); }

}  // namespace vptzd
