#include "drivers/simulated/fault_list.h"

#include <string>

#include <gmock/gmock.h>

#include "bus/fake_bus_service.h"
#include "bus/methods.h"
#include "bus/server.h"
#include "simulation.h"

namespace vptz_test {
namespace {

using testing::HasSubstr;

class FaultSwitch : public testing::Test {
 protected:
  tutorial::VptzResponse Switch(const std::string& text) {
    return vptzd::SimulateFaults(simulation_.fleet(), text);
  }
  // What an answer of 0 tells of the faults in force.
  std::string InForceAfter(const std::string& text) {
    const tutorial::VptzResponse response = Switch(text);
    EXPECT_EQ(response.status_code(), 0) << response.nat_address();
    return response.nat_address();
  }

  Simulation simulation_;
};

constexpr char kNone[] = R"({"faults":[]})";

TEST_F(FaultSwitch, TellsTheFaultsInForceToThoseWhoAsk) {
  EXPECT_EQ(InForceAfter(""), kNone);
  simulation_.fleet().SetFaults({{vptzd::FaultKind::kOffline, 1, "", "", {}},
                                 {vptzd::FaultKind::kDelay, 0, "Choir", "login", 5ms},
                                 {vptzd::FaultKind::kDrop, 0, "", "", {}}});
  const std::string all =
      R"({"faults":[{"kind":"offline","camera":1},)"
      R"({"kind":"delay","camera":"Choir","method":"login","milliseconds":5},{"kind":"drop"}]})";
  EXPECT_EQ(InForceAfter(""), all);
  EXPECT_EQ(InForceAfter("{}"), all);
}

TEST_F(FaultSwitch, ReplacesAllFaultsByThoseOfTheText) {
  EXPECT_EQ(InForceAfter(R"({"faults": [{"kind": "offline", "camera": 2}, {"kind": "lose_power"}]})"),
            R"({"faults":[{"kind":"offline","camera":2},{"kind":"lose_power","milliseconds":500}]})");
  EXPECT_EQ(simulation_.fleet().CheckThere(simulation_.fleet().MemberOfDevice(2), "ptz_stop"),
            vptzd::Status::kOffline);
  EXPECT_EQ(InForceAfter(R"({"faults": []})"), kNone);
  EXPECT_EQ(simulation_.fleet().CheckThere(simulation_.fleet().MemberOfDevice(2), "ptz_stop"),
            vptzd::Status::kDone);
}

TEST_F(FaultSwitch, TakesBackWhatItTells) {
  const std::string told = InForceAfter(R"({"faults": [{"kind": "delay", "camera": "A \"b\" \u00e9"}]})");
  EXPECT_EQ(InForceAfter(told), told);
}

TEST_F(FaultSwitch, TellsAMistakeWithItsLineAndChangesNothing) {
  const std::string before = InForceAfter(R"({"faults": [{"kind": "drop"}]})");
  const auto mistake = [&](const std::string& text) {
    const tutorial::VptzResponse response = Switch(text);
    EXPECT_EQ(response.status_code(), -1002) << text;
    EXPECT_EQ(InForceAfter(""), before);
    return response.nat_address();
  };
  EXPECT_THAT(mistake("{\"faults\": [\n{\"kind\": \"sulk\"}]}"), HasSubstr("2: \"kind\" of a fault is to be"));
  EXPECT_THAT(mistake(R"({"faults": [{"kind": "drop", "camera": 3}]})"), HasSubstr("1: \"camera\" of a fault"));
  EXPECT_THAT(mistake(R"({"faults": [{"kind": "drop", "method": "simulate_faults"}]})"),
              HasSubstr("is no method of the service"));
  EXPECT_THAT(mistake(R"({"cameras": []})"), HasSubstr("the request has no \"cameras\""));
  EXPECT_THAT(mistake("nonsense"), HasSubstr("this is no JSON"));
  EXPECT_THAT(mistake(std::string(40000, ' ')), HasSubstr("too long"));
  std::string many = R"({"faults": [{"kind": "drop"})";
  for (int i = 0; i < 256; ++i) many += R"(,{"kind":"drop"})";
  EXPECT_THAT(mistake(many + "]}"), HasSubstr("at most 256"));
}

TEST_F(FaultSwitch, IsNoMethodOfTheTable) { EXPECT_EQ(vptzd::FindMethod(vptzd::kSimulateFaults), nullptr); }

TEST_F(FaultSwitch, IsAnsweredOverTheBusAndConcernedByNoFault) {
  FakeBusService bus;
  vptzd::Server server(simulation_.context());
  ASSERT_EQ(server.Start(nullptr), 0);
  const auto answer = [&](const std::string& text) {
    tutorial::VptzResponse response;
    bus.Request(vptzd::kSimulateFaults, text);
    EXPECT_TRUE(response.ParseFromString(bus.reply));
    return response.nat_address();
  };
  const std::string all =
      R"({"faults":[{"kind":"delay","milliseconds":600000},{"kind":"drop"},{"kind":"oversize"},{"kind":"garble"}]})";
  EXPECT_EQ(answer(all), all);
  EXPECT_EQ(answer(R"({"faults": []})"), kNone);
  EXPECT_EQ(bus.ended, 2);
}

}  // namespace
}  // namespace vptz_test
