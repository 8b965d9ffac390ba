#include "request_identity.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>

namespace dorv {
namespace {

std::int64_t Now(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// The beginning of a file of the kernel's; empty when it cannot be read.
std::string ReadKernelFile(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return "";
  }
  char text[256];
  const ssize_t length = read(file, text, sizeof text);
  close(file);
  return std::string(text, length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::uint64_t Hash(const std::string& text) {
  std::uint64_t hash = 14695981039346656037u;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  }
  return hash;
}

std::string ReadLink(const char* path) {
  char target[64];
  const ssize_t length = readlink(path, target, sizeof target);
  return std::string(target, length > 0 ? static_cast<std::size_t>(length) : 0);
}

// What this process's time namespace adds to the clock since boot, in
// nanoseconds. Nothing when that is unknown: the kernel tells it of the namespace
// of a process's children, which is another one after unshare(CLONE_NEWTIME).
std::optional<std::int64_t> ReadBootOffset() {
  const std::string offsets = ReadKernelFile("/proc/self/timens_offsets");
  if (offsets.empty()) {
    return access("/proc/self/ns/time", F_OK) == 0 ? std::nullopt : std::optional<std::int64_t>(0);
  }
  long long seconds = 0;
  long long nanoseconds = 0;
  const std::size_t line = offsets.find("boottime");
  if (line == std::string::npos ||
      std::sscanf(offsets.c_str() + line, "boottime %lld %lld", &seconds, &nanoseconds) != 2 ||
      ReadLink("/proc/self/ns/time") != ReadLink("/proc/self/ns/time_for_children")) {
    return std::nullopt;
  }
  return seconds * 1000000000 + nanoseconds;
}

// The machine's clock since boot.
struct BootClock {
  // Drawn from the kernel's boot id: equal on one machine until it boots again. 0,
  // which never counts as equal, when this process cannot tell.
  std::uint64_t id = 0;
  std::int64_t offset = 0;
};

BootClock ReadBootClock() {
  const std::string boot_id = ReadKernelFile("/proc/sys/kernel/random/boot_id");
  const std::optional<std::int64_t> offset = ReadBootOffset();
  return boot_id.empty() || !offset ? BootClock() : BootClock{Hash(boot_id), *offset};
}

const BootClock& TheBootClock() {
  static const BootClock clock = ReadBootClock();
  return clock;
}

std::int64_t NowSinceBoot() { return Now(CLOCK_BOOTTIME) - TheBootClock().offset; }

void Put(unsigned char* out, std::uint64_t number) {
  for (int i = 0; i < 8; ++i) {
    out[i] = static_cast<unsigned char>(number >> (56 - 8 * i));
  }
}

std::uint64_t Get(const unsigned char* in) {
  std::uint64_t number = 0;
  for (int i = 0; i < 8; ++i) {
    number = (number << 8) | in[i];
  }
  return number;
}

}  // namespace

RequestIdentity RequestIdentity::Make(std::uint64_t caller, std::uint64_t sequence, TimePoint deadline) {
  RequestIdentity identity;
  identity.caller = caller;
  identity.sequence = sequence;
  identity.boot_id = TheBootClock().id;
  identity.boot_deadline = NowSinceBoot();
  identity.wall_deadline = Now(CLOCK_REALTIME);
  // Read last, so that the two above can only come out early.
  const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - Clock::now()).count();
  identity.boot_deadline += left;
  identity.wall_deadline += left;
  return identity;
}

std::optional<RequestIdentity> RequestIdentity::Decode(const void* data, std::size_t size) {
  if (data == nullptr || size != kSize) {
    return std::nullopt;
  }
  const auto* bytes = static_cast<const unsigned char*>(data);
  RequestIdentity identity;
  identity.caller = Get(bytes);
  identity.sequence = Get(bytes + 8);
  identity.boot_id = Get(bytes + 16);
  identity.boot_deadline = static_cast<std::int64_t>(Get(bytes + 24));
  identity.wall_deadline = static_cast<std::int64_t>(Get(bytes + 32));
  return identity;
}

RequestIdentity::Bytes RequestIdentity::Encode() const {
  Bytes bytes;
  Put(bytes.data(), caller);
  Put(bytes.data() + 8, sequence);
  Put(bytes.data() + 16, boot_id);
  Put(bytes.data() + 24, static_cast<std::uint64_t>(boot_deadline));
  Put(bytes.data() + 32, static_cast<std::uint64_t>(wall_deadline));
  return bytes;
}

// A deadline before the beginning of time has passed too.
std::chrono::nanoseconds RequestIdentity::TimeLeft() const {
  std::int64_t left = 0;
  const bool overflown = SharesClock() ? __builtin_sub_overflow(boot_deadline, NowSinceBoot(), &left)
                                       : __builtin_sub_overflow(wall_deadline, Now(CLOCK_REALTIME), &left);
  return std::chrono::nanoseconds(overflown ? std::numeric_limits<std::int64_t>::min() : left);
}

bool RequestIdentity::SharesClock() const { return boot_id != 0 && boot_id == TheBootClock().id; }

bool RequestIdentity::IsTooFar() const {
  const std::chrono::nanoseconds farthest =
      SharesClock() ? kLongestTimeout : kLongestTimeout + kLargestClockDifference;
  return TimeLeft() > farthest;
}

bool SeenRequests::Insert(const RequestIdentity& identity) {
  const auto known = by_caller_.find(identity.caller);
  if (known == by_caller_.end()) {
    MakeRoom();
    // Both know it or, when memory runs out, none.
    Latest fresh = {identity};
    by_caller_.emplace(identity.caller, fresh.begin());
    latest_.splice(latest_.end(), fresh);
    return true;
  }
  RequestIdentity& latest = *known->second;
  if (identity.sequence <= latest.sequence) {
    return false;
  }
  // The later of both deadlines: an earlier request with a long time-out could
  // come again after a short one's deadline.
  latest.sequence = identity.sequence;
  latest.boot_deadline = std::max(latest.boot_deadline, identity.boot_deadline);
  latest.wall_deadline = std::max(latest.wall_deadline, identity.wall_deadline);
  latest_.splice(latest_.end(), latest_, known->second);
  return true;
}

void SeenRequests::MakeRoom() {
  while (!latest_.empty() && (latest_.size() >= kMostCallers || latest_.front().Expired())) {
    by_caller_.erase(latest_.front().caller);
    latest_.pop_front();
  }
}

}  // namespace dorv
