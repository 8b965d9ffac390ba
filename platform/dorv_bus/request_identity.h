// What travels with every request as its correlation data: which client sent it,
// which of the client's requests it is, and until when it may be executed.
#ifndef DORV_BUS_REQUEST_IDENTITY_H
#define DORV_BUS_REQUEST_IDENTITY_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <unordered_map>

#include "waiter.h"

namespace dorv {

// The longest that a call waits, and the farthest that a request's deadline may lie
// ahead.
constexpr std::chrono::seconds kLongestTimeout{3600};

// How far the wall clock of a caller's machine may be ahead of the service's without
// the longest time-out being taken for a mistake.
constexpr std::chrono::seconds kLargestClockDifference{60};

struct RequestIdentity {
  // Encoded: the five numbers below, big-endian, in this order.
  static constexpr std::size_t kSize = 40;
  using Bytes = std::array<unsigned char, kSize>;

  std::uint64_t caller = 0;    // random, one per client object
  std::uint64_t sequence = 0;  // grows by one with each request of the caller

  // The deadline on two clocks. On the machine on which the request was sent
  // (the boot ids agree) the one that counts since boot, in nanoseconds, holds:
  // no user can set it, and a time namespace's own offset is taken off. Elsewhere
  // wall-clock time, in nanoseconds since 1970.
  std::uint64_t boot_id = 0;
  std::int64_t boot_deadline = 0;
  std::int64_t wall_deadline = 0;

  // The deadline is never later than `deadline`, not even by the time that this
  // takes.
  static RequestIdentity Make(std::uint64_t caller, std::uint64_t sequence, TimePoint deadline);
  static std::optional<RequestIdentity> Decode(const void* data, std::size_t size);

  Bytes Encode() const;
  // Until the deadline; 0 or less when it has passed.
  std::chrono::nanoseconds TimeLeft() const;
  bool Expired() const { return TimeLeft().count() <= 0; }
  // Whether the deadline lies farther ahead than a caller can wait: then it is a
  // mistake, or another clock's.
  bool IsTooFar() const;

 private:
  bool SharesClock() const;  // the one since boot
};

// Remembers which requests came, so that none is executed twice.
class SeenRequests {
 public:
  // How many callers are remembered; they take about 2 MiB. To push an honest one
  // out, an attacker must make up as many within its time-out, and read its
  // requests to repeat one. Callers that are made up lock no honest one out.
  static constexpr std::size_t kMostCallers = 16384;

  // False for a request that came before. A caller's requests come in the
  // order of their sequence, so the highest number seen is all there is to
  // remember; it may be forgotten when the caller's last deadline has passed.
  bool Insert(const RequestIdentity& identity);

  std::size_t size() const { return by_caller_.size(); }

 private:
  using Latest = std::list<RequestIdentity>;

  void MakeRoom();

  Latest latest_;  // one a caller, who was heard of longest ago first
  std::unordered_map<std::uint64_t, Latest::iterator> by_caller_;
};

}  // namespace dorv

#endif
