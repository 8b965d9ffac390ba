#include <gmock/gmock.h>
#include <httplib.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "service_host.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class ServiceView : public vptz_test::ServiceHost {
 protected:
  // The port that the service tells when it chose one itself.
  int Port() {
    const std::string output = service_->Output();
    const std::string before = "http://localhost:";
    return std::atoi(output.c_str() + output.find(before) + before.size());
  }

  json Cameras() { return json::parse(httplib::Client("127.0.0.1", Port()).Get("/cameras")->body); }
};

TEST_F(ServiceView, FollowsTheCameras) {
  Serve({"--view", "0"});
  ASSERT_EQ(Cameras().size(), 2u);
  const auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 5.0, 100.0), 0);
  EXPECT_EQ(client->SetBrightness(1, 80.0), 0);
  EXPECT_EQ(client->SetPreset(1, "by the door", "door"), 0);
  EXPECT_TRUE(vptz_test::WaitUntil([&] { return Cameras()[0]["pan"]["position"] == 5.0; }));
  const json camera = Cameras()[0];
  EXPECT_EQ(camera["brightness"], 80.0);
  EXPECT_EQ(camera["powered"], true);
  EXPECT_EQ(camera["blur"], 0.0);
  EXPECT_THAT(camera["presets"].dump(), HasSubstr("by the door"));
  EXPECT_EQ(client->PowerOffDevices(), 0);
  EXPECT_EQ(Cameras()[0]["powered"], false);
}

TEST_F(ServiceView, TellsThatACameraIsOffline) {
  ServeFleet(R"({"faults": [{"kind": "offline", "camera": 2}]})", {"--view", "0"});
  EXPECT_EQ(Cameras()[0]["online"], true);
  EXPECT_EQ(Cameras()[1]["online"], false);
}

TEST_F(ServiceView, TellsThatItIsNotLoggedIn) {
  Serve({"--view", "0"});
  EXPECT_EQ(Cameras()[0]["logged_in"], true);
  EXPECT_EQ(Connected()->Logout(1), 0);
  EXPECT_EQ(Cameras()[0]["logged_in"], false);
  EXPECT_EQ(Cameras()[1]["logged_in"], true);
}

TEST_F(ServiceView, APresetWithoutANameIsShownByItsToken) {
  Serve({"--view", "0"});
  EXPECT_EQ(Connected()->SetPreset(1, "", "door"), 0);
  EXPECT_EQ(Cameras()[0]["presets"].back(), "door");
}

TEST_F(ServiceView, APortThatIsTakenEndsTheService) {
  Serve({"--view", "0"});
  vptz_test::Broker another;
  const vptz_test::RunResult second =
      vptz_test::Run({VPTZD, "--bus", another.address(), "--database", another.folder() + "/vptz.db",
                      "--cameras", "2", "--view", std::to_string(Port())});
  EXPECT_EQ(second.exit_code, 7);
  EXPECT_THAT(second.errors, HasSubstr("cannot serve the web page on port"));
}

}  // namespace
