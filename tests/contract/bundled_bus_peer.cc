// The peer of the bundled bus: its service half behind a private broker.
#include <dorv_bus_service.h>

#include <signal.h>

#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "contract/bus_peer.h"
#include "support/broker.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BundledRequest : public PeerRequest {
 public:
  explicit BundledRequest(bus_request* request) : request_(request), method_(bus_request_method(request)) {
    int length = 0;
    const void* bytes = bus_request_payload(request, &length);
    if (bytes != nullptr) payload_.assign(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
  }
  ~BundledRequest() override {
    if (request_ != nullptr) bus_request_fail(request_, -ECANCELED);
  }

  std::string method() const override { return method_; }
  std::string payload() const override { return payload_; }
  void Reply(const std::string& payload) override {
    bus_request_reply(std::exchange(request_, nullptr), payload.data(), static_cast<int>(payload.size()));
  }
  void Fail(int error) override { bus_request_fail(std::exchange(request_, nullptr), error); }

 private:
  bus_request* request_;
  std::string method_;
  std::string payload_;
};

class BundledService : public PeerService {
 public:
  BundledService(const std::string& name, const std::string& address, PeerHandler handler)
      : handler_(std::move(handler)) {
    const int result = bus_service_new(name.c_str(), address.c_str(), &Handle, this, &service_);
    if (result != 0) throw std::runtime_error("serving " + name + " fails with " + std::to_string(result));
  }
  ~BundledService() override { bus_service_free(service_); }

  bool Emit(const std::string& signal, const std::string& payload) override {
    return bus_service_emit(service_, signal.c_str(), payload.data(), static_cast<int>(payload.size())) == 0;
  }

 private:
  static void Handle(bus_service*, bus_request* request, void* self) {
    static_cast<BundledService*>(self)->handler_(std::make_unique<BundledRequest>(request));
  }

  PeerHandler handler_;
  bus_service* service_ = nullptr;
};

class BundledProcess : public PeerProcess {
 public:
  BundledProcess(const std::string& name, const std::string& address)
      : process_({VPTZ_CONTRACT_BUS_SERVER, name, address}) {
    if (!WaitUntil([this] { return !process_.Output().empty() || !process_.Running(); }) ||
        !process_.Running()) {
      throw std::runtime_error("the service process does not serve: " + process_.Errors());
    }
  }

  void Kill() override {
    process_.Signal(SIGKILL);
    process_.Wait();
  }
  void Stop() override { process_.Signal(SIGSTOP); }
  void Continue() override { process_.Signal(SIGCONT); }

  std::vector<Executed> Received() override {
    std::istringstream lines(process_.Output());
    std::string line;
    std::getline(lines, line);  // tells that it serves
    std::vector<Executed> received;
    while (std::getline(lines, line) && !lines.eof()) {
      const std::size_t space = line.find(' ');
      received.push_back({line.substr(space + 1), std::stoll(line.substr(0, space))});
    }
    return received;
  }

 private:
  Process process_;
};

class BundledPeer : public BusPeer {
 public:
  std::string address() const override { return broker_.address(); }
  std::unique_ptr<PeerService> Serve(const std::string& name, PeerHandler handler) override {
    return std::make_unique<BundledService>(name, address(), std::move(handler));
  }
  std::unique_ptr<PeerProcess> ServeApart(const std::string& name) override {
    return std::make_unique<BundledProcess>(name, address());
  }
  void KillBroker() override { broker_.Kill(); }
  void StartBroker() override { broker_.Start(); }
  void StopBroker() override { broker_.Stop(); }
  void ContinueBroker() override { broker_.Continue(); }

 private:
  Broker broker_;
};

}  // namespace

std::unique_ptr<BusPeer> MakeBusPeer() { return std::make_unique<BundledPeer>(); }

}  // namespace vptz_test
