#include "app/options.h"

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vptz_test {
namespace {

using testing::HasSubstr;
using vptzd::Options;

struct Outcome {
  std::optional<int> exit_code;
  Options options;
  std::string output;
  std::string errors;
};

Outcome Read(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "vptzd");
  Outcome outcome;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  outcome.exit_code =
      vptzd::ReadOptions(static_cast<int>(arguments.size()), arguments.data(), &outcome.options);
  outcome.output = testing::internal::GetCapturedStdout();
  outcome.errors = testing::internal::GetCapturedStderr();
  return outcome;
}

TEST(Options, DefaultsToRealCamerasOnTheDefaultBus) {
  const Outcome outcome = Read({});
  EXPECT_FALSE(outcome.exit_code.has_value());
  EXPECT_FALSE(outcome.options.bus.has_value());
  EXPECT_FALSE(outcome.options.simulated());
  EXPECT_FALSE(outcome.options.cameras.has_value());
}

TEST(Options, TakesBusAndCameras) {
  const Outcome outcome = Read({"--bus", "mqtt://broker:1884", "--cameras=64"});
  EXPECT_FALSE(outcome.exit_code.has_value());
  EXPECT_EQ(outcome.options.bus, "mqtt://broker:1884");
  EXPECT_EQ(outcome.options.cameras, 64u);
  EXPECT_TRUE(outcome.options.simulated());
}

TEST(Options, TakesOneToSixtyFourCameras) {
  EXPECT_FALSE(Read({"--cameras", "1"}).exit_code.has_value());
  for (const char* number : {"0", "65", "-1", "many", "1.5", "", "99999999999999999999"}) {
    const Outcome outcome = Read({"--cameras", number});
    EXPECT_EQ(outcome.exit_code, 2) << number;
    EXPECT_THAT(outcome.errors, HasSubstr("--cameras")) << number;
  }
}

TEST(Options, TakesFleetAndGrace) {
  EXPECT_EQ(Read({}).options.grace, 5.0);
  const Outcome outcome = Read({"--fleet", "fleet.json", "--grace", "0.5"});
  EXPECT_FALSE(outcome.exit_code.has_value());
  EXPECT_EQ(outcome.options.fleet, "fleet.json");
  EXPECT_TRUE(outcome.options.simulated());
  EXPECT_EQ(outcome.options.grace, 0.5);
  for (const char* number : {"-1", "soon", "nan", "1e9"}) {
    EXPECT_EQ(Read({"--grace", number}).exit_code, 2) << number;
  }
}

TEST(Options, RefusesWhatItDoesNotKnow) {
  for (const char* argument : {"--camera", "serve", "-x"}) {
    const Outcome outcome = Read({argument});
    EXPECT_EQ(outcome.exit_code, 2) << argument;
    EXPECT_THAT(outcome.errors, HasSubstr(argument)) << argument;
  }
  EXPECT_EQ(Read({"--bus"}).exit_code, 2);
}

TEST(Options, MistakeIsToldInOneLineThatNamesTheProgram) {
  const auto complaint = [](std::vector<const char*> arguments) { return Read(std::move(arguments)).errors; };
  EXPECT_EQ(complaint({"--camera", "3"}),
            "vptzd: there is no option --camera, perhaps --cameras is meant; see 'vptzd --help'\n");
  EXPECT_EQ(complaint({"--vieu=5"}),
            "vptzd: there is no option --vieu=5, perhaps --view is meant; see 'vptzd --help'\n");
  EXPECT_EQ(complaint({"--nonsense"}), "vptzd: there is no option --nonsense; see 'vptzd --help'\n");
  EXPECT_EQ(complaint({"serve"}), "vptzd: \"serve\" was not expected; see 'vptzd --help'\n");
  EXPECT_EQ(complaint({"--cameras", "0"}),
            "vptzd: --cameras: \"0\" is not a whole number from 1 to 64; see 'vptzd --help'\n");
  EXPECT_EQ(complaint({"--bus"}), "vptzd: --bus: 1 required ADDRESS missing; see 'vptzd --help'\n");
  EXPECT_EQ(complaint({"--grace", "nan"}),
            "vptzd: --grace: \"nan\" is not a number from 0 to 86400; see 'vptzd --help'\n");
}

TEST(Options, HelpNamesEveryOptionAndEndsWell) {
  const Outcome outcome = Read({"--help"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.output, HasSubstr("--bus ADDRESS"));
  EXPECT_THAT(outcome.output, HasSubstr("--cameras N"));
  EXPECT_THAT(outcome.output, HasSubstr("Exit codes:\n  0  ended by"));
  EXPECT_THAT(outcome.output, HasSubstr("print this help"));
}

TEST(Options, VersionEndsWell) {
  const Outcome outcome = Read({"--version"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.output, "vptzd 0.1.0\n");
}

}  // namespace
}  // namespace vptz_test
