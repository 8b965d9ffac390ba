// Logs before main begins and after it has ended.
#include <zerklog.h>

namespace {

constexpr int kError = 0;

void Log(const char* text) {
  ZERK_LOG_write_newline(7, kError, "static_probe.cc", __LINE__, "Log", "%s", text);
}

// Made before the log is used and destroyed after everything that came later.
class Oldest {
 public:
  ~Oldest() { Log("last of all"); }
};

class Speaker {
 public:
  Speaker() { Log("static construction"); }
  ~Speaker() { Log("static destruction"); }
};

const Oldest oldest;
const Speaker speaker;

}  // namespace

int main() { return 0; }
