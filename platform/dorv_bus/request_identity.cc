#include "request_identity.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

namespace dorv {
namespace {

std::int64_t Now(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// A number drawn from the kernel's boot id: equal on one machine until it
// boots again. 0, which never counts as equal, when it cannot be read.
std::uint64_t ReadBootId() {
  const int file = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return 0;
  }
  char text[64];
  const ssize_t length = read(file, text, sizeof text);
  close(file);
  std::uint64_t hash = 14695981039346656037u;
  for (ssize_t i = 0; i < length; ++i) {
    hash = (hash ^ static_cast<unsigned char>(text[i])) * 1099511628211u;
  }
  return length > 0 ? hash : 0;
}

std::uint64_t BootId() {
  static const std::uint64_t boot_id = ReadBootId();
  return boot_id;
}

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
  identity.boot_id = BootId();
  identity.boot_deadline = Now(CLOCK_BOOTTIME);
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

bool RequestIdentity::Expired() const {
  if (boot_id != 0 && boot_id == BootId()) {
    return Now(CLOCK_BOOTTIME) >= boot_deadline;
  }
  return Now(CLOCK_REALTIME) >= wall_deadline;
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
