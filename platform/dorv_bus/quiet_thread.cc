#include "quiet_thread.h"

namespace dorv {
namespace {

thread_local bool quiet = false;

}  // namespace

bool IsQuietThread() { return quiet; }

void MarkQuietThread() { quiet = true; }

}  // namespace dorv
