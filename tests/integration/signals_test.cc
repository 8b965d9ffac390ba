#include <dorv_bus_service.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "integration/integration.h"

namespace vptz_test {
namespace {

// What each client's callbacks have been given: signal and payload, in order.
class Heard {
 public:
  using List = std::vector<std::string>;

  void Add(bus_client* client, std::string what) {
    const std::lock_guard<std::mutex> lock(mutex_);
    by_client_[client].push_back(std::move(what));
  }
  std::vector<List> All() {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<List> lists;
    for (const auto& [client, list] : by_client_) lists.push_back(list);
    return lists;
  }
  bool WaitFor(std::size_t clients, std::size_t each) {
    return WaitUntil([&] {
      const std::vector<List> lists = All();
      if (lists.size() < clients) return false;
      for (const List& list : lists) {
        if (list.size() < each) return false;
      }
      return true;
    });
  }
  void Clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    by_client_.clear();
  }

 private:
  std::mutex mutex_;
  std::map<bus_client*, List> by_client_;
};

Heard one;
Heard all;

std::string Describe(const char* name, const void* payload, std::int32_t length) {
  std::string text = std::string(name) + "=";
  if (length > 0) text.append(static_cast<const char*>(payload), static_cast<std::size_t>(length));
  return text;
}
void HearOne(bus_client* client, void*, const char* name, const void* payload, std::int32_t length) {
  one.Add(client, Describe(name, payload, length));
}
void HearAll(bus_client* client, void*, const char* name, const void* payload, std::int32_t length) {
  all.Add(client, Describe(name, payload, length));
}

class IntegrationSignals : public Integration {
 protected:
  IntegrationSignals() {
    one.Clear();
    all.Clear();
    EXPECT_EQ(bus_service_new("vptz", broker_.address().c_str(), &Refuse, nullptr, &service_), 0);
  }
  ~IntegrationSignals() override { bus_service_free(service_); }

  void Emit(const std::string& signal, const std::string& payload = "") {
    EXPECT_EQ(bus_service_emit(service_, signal.c_str(), payload.data(), static_cast<int>(payload.size())), 0);
  }

  bus_service* service_ = nullptr;

 private:
  static void Refuse(bus_service*, bus_request* request, void*) { bus_request_fail(request, -1); }
};

TEST_F(IntegrationSignals, ManySubscribersHearEverySignalInOrder) {
  std::vector<std::unique_ptr<VptzClient>> clients;
  for (int i = 0; i < 10; ++i) {
    clients.push_back(Connected());
    EXPECT_EQ(clients.back()->SubscribeUpdateDevicesSignal(&HearOne), 0);
    EXPECT_EQ(clients.back()->SubscribeSearchDeviceFinishSignal(&HearOne), 0);
    EXPECT_EQ(clients.back()->SubscribeAllSignal(&HearAll), 0);
  }
  const Heard::List expected = {"update_devices=1", "finish/search_device=", "update_devices=2"};
  Emit("update_devices", "1");
  Emit("finish/search_device");
  Emit("update_devices", "2");
  ASSERT_TRUE(one.WaitFor(10, 3));
  ASSERT_TRUE(all.WaitFor(10, 3));
  EXPECT_THAT(one.All(), testing::AllOf(testing::SizeIs(10), testing::Each(expected)));
  EXPECT_THAT(all.All(), testing::AllOf(testing::SizeIs(10), testing::Each(expected)));
}

TEST_F(IntegrationSignals, UnsubscribedSignalsAreNotHeard) {
  const auto client = Connected();
  EXPECT_EQ(client->SubscribeUpdateDevicesSignal(&HearOne), 0);
  EXPECT_EQ(client->SubscribeSearchDeviceFinishSignal(&HearOne), 0);
  EXPECT_EQ(client->SubscribeSignal("other", &HearAll), 0);
  EXPECT_EQ(client->UnSubscribeUpdateDevicesSignal(), 0);
  EXPECT_EQ(client->UnSubscribeSearchDeviceFinishSignal(), 0);
  Emit("update_devices");
  Emit("finish/search_device");
  Emit("other");
  ASSERT_TRUE(all.WaitFor(1, 1));
  EXPECT_EQ(one.All().size(), 0U);
  EXPECT_EQ(client->UnsubscribeSignal("other"), 0);
  EXPECT_LT(client->UnsubscribeSignal("other"), 0);
}

TEST_F(IntegrationSignals, AreHeardAgainAfterTheBrokerRestarts) {
  const auto client = Connected();
  EXPECT_EQ(client->SubscribeUpdateDevicesSignal(&HearOne), 0);
  broker_.Kill();
  broker_.Start();
  EXPECT_TRUE(WaitUntil([&] {
    bus_service_emit(service_, "update_devices", nullptr, 0);
    return !one.All().empty();
  }));
}

}  // namespace
}  // namespace vptz_test
