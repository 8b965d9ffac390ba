#include "fixture.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::RunResult;
using vptz_test::ServiceTest;
using vptz_test::WaitUntil;

class ExamplesTest : public ServiceTest {
 protected:
  // What the database says of the pan axis of camera 1.
  std::string Stored(const std::string& parameter) {
    return RunHere({"sqlite3", "-cmd", ".timeout 5000", Database(),
                    "SELECT mp.value FROM movement_parameter mp JOIN ptz ON ptz.pan = mp.movement "
                    "WHERE ptz.id = 1 AND mp.name = '" +
                        parameter + "'"})
        .output;
  }

  // What an example prints; it must succeed.
  std::string Example(const std::string& name, const std::vector<std::string>& arguments = {}) {
    std::vector<std::string> words = {std::string(VPTZ_EXAMPLES) + "/example_" + name};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const RunResult result = RunHere(words);
    EXPECT_EQ(result.exit_code, 0) << result.output << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
};

TEST_F(ExamplesTest, StatusListsTheDevices) {
  EXPECT_THAT(Example("status"),
              testing::AllOf(HasSubstr("library 0.1.0, 2 devices"), HasSubstr("device 2: ONVIF"),
                             HasSubstr("PTZ node 2: ptz0"), HasSubstr("media source 4: sub")));
}

TEST_F(ExamplesTest, SearchFindsCameras) { EXPECT_THAT(Example("search"), HasSubstr("2 devices were known")); }

TEST_F(ExamplesTest, TheJoystickMovesAndStops) {
  Example("joystick");
  EXPECT_TRUE(WaitUntil([this] { return Stored("speed") == "0.0\n"; })) << Stored("speed");
  EXPECT_NE(Stored("position"), "0.0\n");
}

TEST_F(ExamplesTest, ThePresetTourGoesToEachPreset) { EXPECT_THAT(Example("preset_tour"), HasSubstr("pan ")); }

TEST_F(ExamplesTest, ImagingSetsThePicture) {
  EXPECT_THAT(Example("imaging"), HasSubstr("brightness 60, contrast 55"));
}

TEST_F(ExamplesTest, NatShowsTheAddressesFromOutside) {
  EXPECT_THAT(Example("nat"), HasSubstr("from outside: rtsp://"));
}

TEST_F(ExamplesTest, TheDatabaseIsReadWithoutTheService) {
  EXPECT_THAT(Example("database", {Database()}), HasSubstr("presets point to the right"));
}

TEST_F(ExamplesTest, SignalsReachAnObjectThatEndsSafely) {
  EXPECT_THAT(Example("callbacks"), HasSubstr("time to look again"));
}

TEST_F(ExamplesTest, TheAsynchronousCallIsAnswered) {
  EXPECT_THAT(Example("asynchronous"), testing::AllOf(HasSubstr("sent"), HasSubstr("get_status: ")));
}

}  // namespace
