#include "contract/bus_fixture.h"

#include <array>

#include "support/wait_until.h"

namespace vptz_test {
namespace {

template <int index>
void Callback(bus_client* client, void* user_data, const char* name, const void* payload, std::int32_t length) {
  Delivery delivery{client, user_data, name, "", length, payload == nullptr, std::this_thread::get_id()};
  if (length > 0) delivery.payload.assign(static_cast<const char*>(payload), static_cast<std::size_t>(length));
  TheReceiver(index).Deliver(delivery);
}

std::array<Receiver, kReceivers>& Receivers() {
  static std::array<Receiver, kReceivers> receivers = {Receiver(&Callback<0>), Receiver(&Callback<1>),
                                                       Receiver(&Callback<2>)};
  return receivers;
}

}  // namespace

void Receiver::OnDelivery(std::function<void(const Delivery&)> action) {
  const std::lock_guard<std::mutex> lock(mutex_);
  action_ = std::move(action);
}

void Receiver::Deliver(const Delivery& delivery) {
  std::function<void(const Delivery&)> action;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    deliveries_.push_back(delivery);
    arrived_.notify_all();
    action = action_;
  }
  if (action) action(delivery);
}

std::vector<Delivery> Receiver::All() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return deliveries_;
}

bool Receiver::WaitFor(std::size_t count, milliseconds limit) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return arrived_.wait_for(lock, limit * Patience(), [&] { return deliveries_.size() >= count; });
}

void Receiver::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  deliveries_.clear();
  action_ = nullptr;
}

Receiver& TheReceiver(int index) { return Receivers().at(static_cast<std::size_t>(index)); }

void Event::Set() {
  const std::lock_guard<std::mutex> lock(mutex_);
  set_ = true;
  changed_.notify_all();
}

bool Event::Wait(milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, limit * Patience(), [this] { return set_; });
}

CallResult Call(bus_client* client, const std::string& service, const std::string& method,
                const std::string& request, int timeout) {
  std::string reply(131072, '\0');
  int length = static_cast<int>(reply.size());
  const int code = bus_method_call_sync(client, service.c_str(), method.c_str(), request.data(),
                                        static_cast<int>(request.size()), reply.data(), &length, timeout);
  if (code < 0) return {code, ""};
  return {code, reply.substr(0, static_cast<std::size_t>(length))};
}

int CallAsync(bus_client* client, const std::string& service, const std::string& method,
              const std::string& request, bus_callback callback, int timeout) {
  return bus_method_call_async(client, service.c_str(), method.c_str(), request.data(),
                               static_cast<int>(request.size()), callback, timeout);
}

KeepingService::KeepingService(BusPeer& peer, const std::string& name)
    : service_(peer.Serve(name, [this](std::unique_ptr<PeerRequest> request) { Handle(std::move(request)); })) {
}

void KeepingService::Handle(std::unique_ptr<PeerRequest> request) {
  if (request->method() == "echo") {
    request->Reply(request->payload());
    return;
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  kept_.push_back(std::move(request));
  changed_.notify_all();
}

bool KeepingService::WaitKept(std::size_t count, milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, limit * Patience(), [&] { return kept_.size() >= count; });
}

std::unique_ptr<PeerRequest> KeepingService::Take() {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::unique_ptr<PeerRequest> request = std::move(kept_.at(0));
  kept_.erase(kept_.begin());
  return request;
}

BusContract::BusContract() : peer_(MakeBusPeer()) {
  for (int index = 0; index < kReceivers; ++index) TheReceiver(index).Clear();
  EXPECT_EQ(bus_init(), 0);
}

BusContract::~BusContract() { bus_cleanup(); }

ClientPtr BusContract::Connected() const {
  ClientPtr client = NewClient();
  EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), 0);
  return client;
}

}  // namespace vptz_test
