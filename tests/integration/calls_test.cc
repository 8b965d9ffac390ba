#include <dorv_bus_service.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <thread>
#include <vector>

#include "integration/integration.h"

namespace vptz_test {
namespace {

class IntegrationCalls : public IntegrationWithService {};

TEST_F(IntegrationCalls, ServiceAnswers) {
  const auto client = Connected();
  EXPECT_EQ(client->GetStatus(), 0);
  EXPECT_EQ(client->GetDevicesPowerStatus(), 1);
  EXPECT_EQ(client->PowerOffDevices(), 0);
  EXPECT_EQ(client->GetDevicesPowerStatus(), 0);
}

TEST_F(IntegrationCalls, RefusalOfTheServiceComesBackUnchanged) {
  const auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(77, 0, 10), -1004);
  EXPECT_EQ(client->AbsolutePanMove(1, 1000, 10), -1006);
  VptzPtzData profile;
  profile.track_mode = 5;
  EXPECT_EQ(client->QueryPtzProfiles(77, "ptz0", &profile), -1004);
  EXPECT_EQ(profile.track_mode, 5);
}

TEST_F(IntegrationCalls, InitConnectsToTheAddressInTheEnvironment) {
  setenv("DORV_BUS_ADDRESS", broker_.address().c_str(), 1);
  VptzClient client;
  EXPECT_EQ(client.Init(), 0);
  EXPECT_EQ(client.GetStatus(), 0);
  unsetenv("DORV_BUS_ADDRESS");
}

TEST_F(IntegrationCalls, ClientThatDisconnectedCannotCallUntilItConnectsAgain) {
  const auto client = Connected();
  EXPECT_EQ(client->Disconnect(), 0);
  EXPECT_EQ(client->GetStatus(), -ENOTCONN);
  EXPECT_EQ(client->Connect("integration", broker_.address().c_str()), 0);
  EXPECT_EQ(client->GetStatus(), 0);
  EXPECT_EQ(client->Release(), 0);
  EXPECT_EQ(client->GetStatus(), -ENOTCONN);
}

TEST_F(IntegrationCalls, SecondServiceOfTheNameDoesNotStart) {
  const RunResult second = vptz_test::Run(
      {VPTZD, "--cameras", "2", "--bus", broker_.address(), "--database", broker_.folder() + "/second.db"});
  EXPECT_NE(second.exit_code, 0);
  EXPECT_NE(second.errors, "");
  EXPECT_EQ(Connected()->GetStatus(), 0);
}

TEST_F(IntegrationCalls, TwoClientsAtOnceDriveTheirOwnCameras) {
  const auto drive = [](VptzClient& client, unsigned camera, double target) {
    EXPECT_EQ(client.AbsolutePanMove(camera, target, 100), 0);
    double pan = 0;
    EXPECT_TRUE(WaitUntil([&] {
      pan = Pan(client, camera);
      // One camera goes to the right, the other to the left.
      EXPECT_GE(pan * target, 0);
      return pan == target || HasFailure();
    }));
    EXPECT_EQ(pan, target);
  };
  const auto first = Connected();
  const auto second = Connected();
  std::thread other([&] { drive(*second, 2, -40); });
  drive(*first, 1, 40);
  other.join();
}

std::atomic<int> answers{0};
std::atomic<int> answer_length{0};
void CountAnswer(bus_client*, void*, const char*, const void*, std::int32_t length) {
  answer_length = length;
  ++answers;
}

TEST_F(IntegrationCalls, PreparedRequestIsAnsweredLater) {
  const auto client = Connected();
  answers = 0;
  // A VptzCommand whose first field, the method's name, is "get_status".
  const std::string request = "\x0a\x0aget_status";
  EXPECT_EQ(client->CallAsync("get_status", request.data(), static_cast<int>(request.size()), &CountAnswer, 0),
            0);
  ASSERT_TRUE(WaitUntil([] { return answers == 1; }));
  EXPECT_GT(answer_length, 0);
}

// A service that answers every call with so many bytes.
class ServiceOfLongReplies {
 public:
  ServiceOfLongReplies(const std::string& address, std::size_t length) : reply_(length, '\0') {
    // Field 15, which VptzResponse does not have, as long as it takes.
    reply_[0] = '\x7a';
    reply_[1] = static_cast<char>(0x80 | ((length - 3) & 0x7f));
    reply_[2] = static_cast<char>((length - 3) >> 7);
    EXPECT_EQ(bus_service_new("vptz", address.c_str(), &Answer, this, &service_), 0);
  }
  ~ServiceOfLongReplies() { bus_service_free(service_); }

 private:
  static void Answer(bus_service*, bus_request* request, void* self) {
    const std::string& reply = static_cast<ServiceOfLongReplies*>(self)->reply_;
    bus_request_reply(request, reply.data(), static_cast<int>(reply.size()));
  }

  std::string reply_;
  bus_service* service_ = nullptr;
};

class IntegrationLongReplies : public Integration {};

TEST_F(IntegrationLongReplies, ReplyOf512BytesIsRead) {
  const ServiceOfLongReplies service(broker_.address(), 512);
  EXPECT_EQ(Connected()->GetStatus(), 0);
}

TEST_F(IntegrationLongReplies, LongerReplyIsRefused) {
  const ServiceOfLongReplies service(broker_.address(), 513);
  const auto client = Connected();
  EXPECT_EQ(client->GetStatus(), -EMSGSIZE);
  VptzPtzData profile;
  profile.track_mode = 5;
  EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &profile), -EMSGSIZE);
  EXPECT_EQ(profile.track_mode, 5);
}

}  // namespace
}  // namespace vptz_test
