// Everything that the service looks after: the cameras, their power, the ports
// and the mappings. Guarded by one lock, which the thread that uses the fleet holds
// meanwhile.
#ifndef VPTZ_SERVICE_FLEET_FLEET_H
#define VPTZ_SERVICE_FLEET_FLEET_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/simulated/clock.h"
#include "drivers/simulated/faults.h"
#include "drivers/status.h"
#include "fleet/member.h"
#include "fleet/nat_table.h"
#include "fleet/ports.h"

namespace vptzd {

class Fleet {
 public:
  static constexpr std::size_t kMaxBuiltInCameras = 64;  // --cameras
  static constexpr std::size_t kMaxMembers = 512;        // with those that are added

  // Has one camera of each description, none of which is known by rows yet. The
  // clock outlives the fleet.
  Fleet(const std::vector<CameraDescription>& cameras, const Clock& clock);

  // `cameras` built-in cameras, whose rows have the ids that a database gives
  // that holds nothing else.
  Fleet(std::size_t cameras, const Clock& clock);

  // Real cameras: those that have rows. There is no simulated one, and none comes
  // into being.
  explicit Fleet(const Clock& clock);

  bool simulated() const { return simulated_; }

  // Locks the fleet and brings it to the present time.
  std::unique_lock<std::mutex> Enter();

  const Clock& clock() const { return clock_; }
  std::size_t size() const { return members_.size(); }
  const std::vector<std::unique_ptr<Member>>& members() const { return members_; }

  // Camera 1 ... N by its number. Null when there is none.
  Camera* CameraNumber(std::uint32_t number);

  // By the id of a row. Null when there is none, and for 0.
  Member* MemberOfDevice(std::uint32_t id);
  Member* MemberOfPtz(std::uint32_t id);
  Member* MemberOfMedia(std::uint32_t id);
  Camera* CameraOfDevice(std::uint32_t id);
  Camera* CameraOfPtz(std::uint32_t id);

  // By host or port, by service address as it is written, and by what a service
  // address reaches. Null when there is none.
  Member* MemberAt(const std::string& address);
  Member* MemberOfService(const std::string& service_uri);
  Member* MemberReachedBy(const std::string& service_uri);

  // Adds a camera that is not listed. Null when there are too many.
  Member* Add(const CameraDescription& description);

  // Has the camera of that device follow the leader; 0: none. One that follows no
  // more does not run on: the leader's stop does not reach it.
  void SetFollower(Member* leader, std::uint32_t device);

  // Makes a camera unknown, for which no stop can come any more: nothing that runs
  // until it is stopped runs on. It goes when it is outside the fleet.
  void Forget(Member* member);

  // What a camera is called in commands.
  void SetIds(std::size_t number, const CameraIds& ids) { members_[number - 1]->ids = ids; }

  // Whether all known cameras have power; one that the service is logged in to and
  // cannot reach has none.
  bool powered() const;
  // kUnsupported when there is no camera whose power can be switched.
  Status PowerOn();
  Status PowerOff();

  // How long an axis or the focus that is driven until it is stopped goes on
  // without a call about the camera from the caller that drives it; 0: for ever.
  void set_grace(std::chrono::nanoseconds grace) { grace_ = grace; }
  Driver DriverFor(std::uint64_t caller) const { return {caller, grace_}; }

  // The caller whose command is carried out while the fleet is entered: set
  // before a handler that answers at once, and for this one only.
  std::uint64_t caller() const { return caller_; }
  void set_caller(std::uint64_t caller) { caller_ = caller; }

  void SetFaults(std::vector<Fault> faults) { faults_ = std::move(faults); }
  const std::vector<Fault>& faults() const { return faults_; }
  // The member may be null: a call about no camera.
  const Fault* FindFault(FaultKind kind, const Member* member, std::string_view method) const;

  // kUnknownId for null, kUnsupported for a camera that nothing commands, kOffline,
  // kNotLoggedIn; else kDone.
  Status CheckThere(const Member* member, std::string_view method) const;
  Status CheckUsable(const Member* member, std::string_view method) const;

  bool searching() const { return searching_; }
  void set_searching(bool searching) { searching_ = searching; }

  NatTable& nat() { return nat_; }

  Ports& ports() { return ports_; }

  bool reset_2p0() const { return reset_2p0_; }
  void set_reset_2p0(bool enabled) { reset_2p0_ = enabled; }

 private:
  template <class Condition>
  Member* FindIf(Condition condition);

  std::mutex mutex_;
  const Clock& clock_;
  bool simulated_ = true;
  std::chrono::nanoseconds present_;
  std::vector<std::unique_ptr<Member>> members_;
  std::chrono::nanoseconds grace_{0};
  std::uint64_t caller_ = 0;
  std::vector<Fault> faults_;
  bool searching_ = false;
  NatTable nat_;
  Ports ports_;
  bool reset_2p0_ = false;
};

}  // namespace vptzd

#endif
