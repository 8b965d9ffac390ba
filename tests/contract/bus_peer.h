// The other side of the bus, as the contract tests need it: a broker that can
// be killed and held still, and services behind it. Whoever brings another
// implementation of dorv_bus.h brings one of these too and names its source in
// the CMake variable VPTZ_CONTRACT_BUS_PEER.
#ifndef VPTZ_TESTS_CONTRACT_BUS_PEER_H
#define VPTZ_TESTS_CONTRACT_BUS_PEER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vptz_test {

// One request as the service received it. Ends with one Reply or Fail; when it
// is destroyed before, the caller gets some failure or none.
class PeerRequest {
 public:
  virtual ~PeerRequest() = default;
  virtual std::string method() const = 0;
  virtual std::string payload() const = 0;
  virtual void Reply(const std::string& payload) = 0;
  virtual void Fail(int error) = 0;
};

// Called for one request after the other on a thread of the service.
using PeerHandler = std::function<void(std::unique_ptr<PeerRequest>)>;

// A name served inside the test process until the object goes. Comes back by
// itself after a loss of the broker.
class PeerService {
 public:
  virtual ~PeerService() = default;

  // False while there is no connection.
  virtual bool Emit(const std::string& signal, const std::string& payload) = 0;
};

// A request that a process of its own has executed, and when by the steady
// clock that all processes of the machine share.
struct Executed {
  std::string payload;
  std::int64_t nanoseconds;
};

// A name served by a process of its own: it answers the method "echo" with the
// request's bytes and never answers any other.
class PeerProcess {
 public:
  virtual ~PeerProcess() = default;
  virtual void Kill() = 0;
  virtual void Stop() = 0;
  virtual void Continue() = 0;

  // In the order of execution. Payloads hold no line feeds here.
  virtual std::vector<Executed> Received() = 0;
};

class BusPeer {
 public:
  virtual ~BusPeer() = default;

  // What bus_connect takes.
  virtual std::string address() const = 0;

  // Both return when calls reach the service.
  virtual std::unique_ptr<PeerService> Serve(const std::string& name, PeerHandler handler) = 0;
  virtual std::unique_ptr<PeerProcess> ServeApart(const std::string& name) = 0;

  // Kill leaves nobody listening; Stop leaves connections that nobody serves.
  virtual void KillBroker() = 0;
  virtual void StartBroker() = 0;
  virtual void StopBroker() = 0;
  virtual void ContinueBroker() = 0;
};

// A peer with a running broker.
std::unique_ptr<BusPeer> MakeBusPeer();

}  // namespace vptz_test

#endif
