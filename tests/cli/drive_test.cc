// ptz drive --for, and the stop behind it.
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "cli_test.h"
#include "fake_service.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;

class DriveTest : public CliTest {
 protected:
  // A grace period that is much shorter than the drives.
  DriveTest() {
    service.reset();
    StartService({"--grace", "1"});
  }
};

TEST_F(DriveTest, IsHeldBeyondTheGracePeriodAndThenStopped) {
  const auto begin = std::chrono::steady_clock::now();
  const Json object = CtlJson("ptz drive 1 --pan 2 --tilt 1 --for 2.5");
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
  EXPECT_EQ(object["for"], 2.5);
  EXPECT_EQ(object["stopped"], true);
  EXPECT_GE(object["elapsed"], 2.5);
  const Json rest = AtRest();
  EXPECT_GT(rest["pan"]["position"], 4.5);
  EXPECT_GT(rest["tilt"]["position"], 2.2);
}

TEST_F(DriveTest, WithoutItTheCommandEndsAtOnce) {
  const Json object = CtlJson("ptz drive 1 --pan 2");
  EXPECT_EQ(object["for"], Json());
  EXPECT_FALSE(object.contains("stopped"));
  EXPECT_TRUE(ReachesSpeeds("1", 2, 0, 0));
}

TEST_F(DriveTest, EverySignalThatEndsItStopsTheCamera) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Process drive(ToolOnBus("ptz drive 1 --pan 2 --for 3600"), environment());
    ASSERT_TRUE(ReachesSpeeds("1", 2, 0, 0));
    drive.Signal(signal);
    EXPECT_EQ(drive.Wait(), 0) << drive.Errors();
    EXPECT_THAT(drive.Output(), testing::ContainsRegex("stopped +yes"));
    EXPECT_EQ(CtlJson("ptz position 1")["pan"]["speed"].get<double>() < 2, true);
  }
}

TEST_F(DriveTest, ARefusedVelocityIsToldAndStopsNothing) {
  CtlJson("ptz drive 1 --pan 2");
  CtlJson("power off");
  ExpectFailure(Ctl("--json ptz drive 1 --tilt 1 --for 3600"), 1, "powered_off");
}

class StopTest : public BusTest {
 protected:
  // Counts the calls, and answers the first stops with a failure.
  void Answer(bus_request* request) {
    const std::string method = bus_request_method(request);
    if (method == "continuous_move") ++velocities;
    const bool fails = method == "ptz_stop" && ++stops <= failing_stops;
    if (fails) {
      vptz_test::FailingWith(failure)(request);
    } else {
      vptz_test::AnsweringStatus(method == "continuous_move" && velocities > accepted ? -1009 : 0)(request);
    }
  }

  std::atomic<int> velocities{0}, stops{0}, failing_stops{0}, failure{-ETIMEDOUT}, accepted{1000};
  FakeService service{broker.address(), [this](bus_request* request) { Answer(request); }};
};

TEST_F(StopTest, TheVelocityIsRepeatedUntilTheTimeIsOver) {
  EXPECT_EQ(CtlJson("ptz drive 1 --zoom 1 --for 1.2")["stopped"], true);
  EXPECT_EQ(velocities, 3);
  EXPECT_EQ(stops, 1);
}

// As by Ctrl-Z: meanwhile the grace period has stopped the camera.
TEST_F(StopTest, ADriveThatWasHeldStillMovesNoCameraAgain) {
  Process drive(ToolOnBus("--json ptz drive 1 --pan 1 --for 3600"), environment());
  ASSERT_TRUE(WaitUntil([this] { return velocities > 1; }));
  drive.Signal(SIGSTOP);
  std::this_thread::sleep_for(std::chrono::milliseconds(2700));  // it is held still that long
  const int before = velocities;
  drive.Signal(SIGCONT);
  EXPECT_EQ(drive.Wait(), 0);
  EXPECT_EQ(velocities, before);
  EXPECT_EQ(stops, 1);
  EXPECT_EQ(Json::parse(drive.Output())["stopped"], true);
}

TEST_F(StopTest, AStopThatDoesNotArriveIsTriedAgain) {
  failing_stops = 5;
  EXPECT_EQ(CtlJson("ptz drive 1 --pan 1 --for 0.01")["stopped"], true);
  EXPECT_EQ(stops, 6);
}

// As when a terminal is closed: the kernel tells, and then the shell.
TEST_F(StopTest, ASecondHangUpDoesNotKeepTheStopFromArriving) {
  failing_stops = 1000;
  Process drive(ToolOnBus("--json ptz drive 1 --pan 1 --for 3600"), environment());
  ASSERT_TRUE(WaitUntil([this] { return velocities > 0; }));
  drive.Signal(SIGHUP);
  ASSERT_TRUE(WaitUntil([this] { return stops > 0; }));
  drive.Signal(SIGHUP);
  const int before = stops;
  ASSERT_TRUE(WaitUntil([&] { return stops > before + 1; }));
  failing_stops = 0;
  EXPECT_EQ(drive.Wait(), 0);
  EXPECT_EQ(Json::parse(drive.Output())["stopped"], true);
}

TEST_F(StopTest, AVelocityThatFailsOnTheWayEndsWithAStop) {
  accepted = 1;
  failing_stops = 1;
  const RunResult result = Ctl("--json ptz drive 1 --pan 1 --for 3600");
  EXPECT_EQ(velocities, 2);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(stops, 2) << "what was accepted before may still move";
}

TEST_F(StopTest, WithoutABusTheStopGoesOnUntilTheBusIsBack) {
  Process drive(ToolOnBus("--timeout 1 ptz drive 1 --pan 1 --for 3600"), environment());
  ASSERT_TRUE(WaitUntil([this] { return velocities > 0; }));
  broker.Kill();
  broker.Start();
  drive.Signal(SIGINT);
  drive.Wait();
  EXPECT_GE(stops, 1);
}

}  // namespace
