// The tool with the reference service, camera by camera: what each command
// changes in the world, in the form for people and the one for programs.
#include <fstream>

#include "cli_test.h"
#include "support/canary.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;

class TourTest : public CliTest {
 protected:
  std::string Secret(const std::string& password) {
    return "--password-file " + Write("secret", password + "\n");
  }

  void LogIn(const std::string& camera) {
    const RunResult result = Ctl("device login " + camera + " admin " + Secret("admin"));
    ASSERT_EQ(result.exit_code, 0) << result.errors;
  }

  std::size_t Cameras() { return CtlJson("device list")["cameras"].size(); }

  // The words of a command that succeeds.
  std::string Words(const std::string& line) {
    const RunResult result = Ctl(line);
    EXPECT_EQ(result.exit_code, 0) << line << ": " << result.errors;
    return result.output;
  }
};

TEST_F(TourTest, SearchFindsCamerasThatAreThenListed) {
  const RunResult result = Ctl("search --protocols NDI --json");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  const std::string first = result.output.substr(0, result.output.find('\n'));
  EXPECT_EQ(Json::parse(first)["protocol"], "NDI");
  EXPECT_EQ(CtlJson("device list --protocol NDI")["cameras"].size(), 1u);
  EXPECT_THAT(Words("search --protocols NDI"), testing::ContainsRegex("new cameras +0\n"));
}

TEST_F(TourTest, MonitorHearsWhatOtherCommandsChange) {
  Process monitor(ToolOnBus("monitor --json --signal update_devices --count 1"), environment());
  EXPECT_TRUE(WaitUntil([&] {
    Ctl("device info 1");
    return !monitor.Running();
  }));
  EXPECT_EQ(monitor.Wait(), 0);
  EXPECT_EQ(Json::parse(monitor.Output())["signal"], "update_devices");
}

TEST_F(TourTest, CamerasAreAddedAndRemoved) {
  EXPECT_EQ(Words("device add NDI 192.0.2.90 --name Balcony"),
            "device add: protocol NDI, address 192.0.2.90, name Balcony: done\n");
  EXPECT_EQ(CtlJson("device show Balcony")["protocol"], "NDI");
  EXPECT_EQ(CtlJson("device add-onvif http://192.0.2.91/onvif/device_service")["status"], 0);
  EXPECT_EQ(CtlJson("device add-serial ttyS0 --name Choir --unit 2")["unit"], 2);
  EXPECT_EQ(CtlJson("device show Choir")["protocol"], "RS232");
  EXPECT_EQ(Cameras(), 5u);
  EXPECT_EQ(CtlJson("device remove Balcony")["status"], 0);
  EXPECT_EQ(Cameras(), 4u);
  ExpectFailure(Ctl("--json device show Balcony"), 7, "unknown_camera");
}

TEST_F(TourTest, ACameraIsLoggedInToAndOutOf) {
  EXPECT_EQ(CtlJson("device logout 1")["status"], 0);
  EXPECT_EQ(CtlJson("device show 1")["logged_in"], false);
  const RunResult refused = Ctl("--json device login 1 admin " + Secret(VPTZ_TEST_CANARY));
  ExpectFailure(refused, 1, "not_logged_in");
  EXPECT_THAT(refused.output + refused.errors, Not(HasSubstr(VPTZ_TEST_CANARY)));
  LogIn("1");
  EXPECT_EQ(CtlJson("device show 1")["logged_in"], true);
}

TEST_F(TourTest, ACameraTellsWhatItIs) {
  LogIn("1");
  Sql("UPDATE device SET model_name = '', is_alive = 0 WHERE id = 1");
  EXPECT_EQ(CtlJson("device info 1")["alive"], true);
  EXPECT_EQ(CtlJson("device info 1")["model"], Json());
  EXPECT_THAT(Words("device info 1 --full"), testing::ContainsRegex("model +[A-Z]"));
  EXPECT_EQ(CtlJson("device capabilities 1")["ptz_profiles"][0]["moves_to"], "pan, tilt, zoom");
}

TEST_F(TourTest, TheControlProtocolIsSet) {
  EXPECT_EQ(Words("device protocol 1 NDI"), "device protocol: camera 1, protocol NDI: done\n");
  EXPECT_EQ(CtlJson("device show 1")["protocol"], "NDI");
  ExpectFailure(Ctl("--json device protocol 1 CARRIER_PIGEON"), 1, "unknown_id");
}

TEST_F(TourTest, ASlaveIsCoupledByNameAndByAddress) {
  LogIn("1");
  LogIn("2");
  EXPECT_EQ(CtlJson("device slave 1 --slave camera-2")["slave"], 2);
  EXPECT_EQ(CtlJson("device slave 1 --none")["none"], true);
  const std::string line = "device slave 1 --address 192.0.2.2 --account admin " + Secret("admin");
  EXPECT_EQ(CtlJson(line)["account"], "admin");
  EXPECT_EQ(Words("device slave 1 --none"), "device slave: camera 1, none: done\n");
}

TEST_F(TourTest, ACameraIsDeclaredAnew) {
  CtlJson("device add-serial ttyS0 --name Choir");
  EXPECT_EQ(CtlJson("device declare Choir --unit 3")["unit"], 3);
  CtlJson("device add NDI 192.0.2.90 --name Balcony --mac 02:00:5e:00:53:90");
  const RunResult result = Ctl("device declare Balcony --address 192.0.2.99 --name Gallery");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(CtlJson("device list --protocol VISCA_OVER_IP")["cameras"][0]["name"], "Gallery");
}

TEST_F(TourTest, ACameraIsRenamedAndNothingElseOfItChanges) {
  const Json before = CtlJson("device show 2");
  EXPECT_EQ(Words("device rename camera-2 Stage"), "device rename: camera 2, name Stage: done\n");
  Json after = CtlJson("device show Stage");
  after["name"] = before["name"];
  EXPECT_EQ(after, before);
  CtlJson("ptz move Stage --pan 1");
}

TEST_F(TourTest, ACameraWithoutAHardwareAddressIsRenamedToo) {
  CtlJson("device add NDI 192.0.2.90 --name Balcony");
  CtlJson("device rename Balcony Gallery");
  EXPECT_EQ(CtlJson("device show Gallery")["address"], "192.0.2.90");
  EXPECT_EQ(CtlJson("device show Gallery")["protocol"], "NDI");
  EXPECT_EQ(Cameras(), 3u);
}

TEST_F(TourTest, ASerialCameraKeepsItsName) {
  CtlJson("device add-serial ttyS0 --name Choir");
  ExpectFailure(Ctl("--json device rename Choir Organ"), 2, "serial_camera");
}

TEST_F(TourTest, PresetsAreStoredRecalledAndRemoved) {
  LogIn("1");
  CtlJson("ptz move 1 --pan 12 --tilt 3 --zoom 2");
  AtRest();
  EXPECT_EQ(Words("preset set 1 preset9 --name Organ"),
            "preset set: camera 1, token preset9, name Organ: done\n");
  const Json stored = CtlJson("preset list 1")["presets"].back();
  EXPECT_EQ(stored["name"], "Organ");
  EXPECT_EQ(stored["pan"], 12.0);
  CtlJson("ptz home 1");
  AtRest();
  EXPECT_EQ(CtlJson("preset goto 1 preset9")["token"], "preset9");
  EXPECT_EQ(AtRest()["pan"]["position"], 12.0);
  EXPECT_EQ(CtlJson("preset goto 1 --id 2 --pan-speed 90")["id"], 2);
  EXPECT_EQ(AtRest()["pan"]["position"], -35.0);
  EXPECT_EQ(CtlJson("preset refresh 1")["status"], 0);
  EXPECT_EQ(CtlJson("preset refresh 1 --profile 1")["status"], 0);
  EXPECT_EQ(CtlJson("preset remove 1 preset9")["status"], 0);
  EXPECT_EQ(CtlJson("preset list 1")["count"], 3);
  ExpectFailure(Ctl("--json preset goto 1 preset9"), 1, "unknown_id");
}

TEST_F(TourTest, PositionsAreReadIntoTheDatabase) {
  LogIn("1");
  EXPECT_EQ(Words("ptz refresh 1"), "ptz refresh: camera 1: done\n");
  EXPECT_EQ(CtlJson("ptz refresh 1")["status"], 0);
}

TEST_F(TourTest, TheImageIsSetOfOneProfileOrOfAll) {
  LogIn("1");
  EXPECT_EQ(Words("image set 1 --brightness 61 --contrast 62"),
            "image set: camera 1, brightness 61, contrast 62: done\n");
  EXPECT_EQ(CtlJson("image show 1")["brightness"]["value"], 61.0);
  EXPECT_EQ(CtlJson("image show 1")["contrast"]["value"], 62.0);
  const Json all = CtlJson("image set 1 --sharpness 63 --all");
  EXPECT_EQ(all["all"], true);
  EXPECT_EQ(all["profile"], Json());
  for (const char* profile : {"1", "2"}) {
    EXPECT_EQ(CtlJson(std::string("image show 1 --profile ") + profile)["sharpness"]["value"], 63.0);
  }
  ExpectFailure(Ctl("--json image set 1 --brightness 9999 --all"), 1, "out_of_range");
}

TEST_F(TourTest, TheFocusIsDrivenAndSwitched) {
  LogIn("1");
  for (const std::string verb : {"far", "near", "stop", "switch"}) {
    EXPECT_EQ(Words("focus " + verb + " 1"), "focus " + verb + ": camera 1: done\n");
    EXPECT_EQ(CtlJson("focus " + verb + " 1")["status"], 0);
  }
}

TEST_F(TourTest, AddressesBecomeReachableFromOutside) {
  EXPECT_EQ(CtlJson("nat query 1")["addresses"][0]["outside"], Json());
  EXPECT_EQ(Words("nat enable 1"), "nat enable: camera 1: done\n");
  const Json addresses = CtlJson("nat query 1")["addresses"];
  EXPECT_EQ(addresses.size(), 4u);
  for (const Json& address : addresses) EXPECT_TRUE(address["outside"].is_string()) << address;
  EXPECT_THAT(Words("nat query 1 --type media"), HasSubstr("rtsp://192.0.2.1/main"));
  EXPECT_EQ(CtlJson("nat disable 1 --type http")["type"], "http");
  EXPECT_EQ(CtlJson("nat query 1 --type http")["addresses"][0]["outside"], Json());
  EXPECT_EQ(Words("nat clear"), "nat clear: done\n");
  EXPECT_EQ(CtlJson("nat query 1 --type media")["addresses"][0]["outside"], Json());
}

TEST_F(TourTest, ALineIsSetForAllSerialCameras) {
  CtlJson("device add-serial ttyS0 --name Choir");
  EXPECT_EQ(CtlJson("serial line ttyS7 --baud-rate 19200")["baud_rate"], 19200);
  EXPECT_EQ(CtlJson("device show Choir")["address"], "ttyS7");
  EXPECT_EQ(Words("serial config"), "serial config: done\n");
}

// The program as it is shipped; its own database is not there, and what needs
// none works.
TEST_F(CliTest, TheProductAnswersTheSame) {
  const RunResult status = vptz_test::Run({VPTZCTL_PRODUCT, "--bus", broker.address(), "status", "--json"});
  EXPECT_EQ(status.exit_code, 0) << status.errors;
  EXPECT_EQ(Json::parse(status.output)["state"], "running");
  const RunResult version = vptz_test::Run({VPTZCTL_PRODUCT, "--version"});
  EXPECT_EQ(version.output, "vptzctl " VPTZ_VERSION "\n");
}

}  // namespace
