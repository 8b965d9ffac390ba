#include "drivers/simulated/simulated_fleet.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/addresses.h"
#include "drivers/simulated/document.h"
#include "simulation.h"
#include "support/canary.h"

namespace vptz_test {
namespace {

using testing::HasSubstr;
using vptzd::ReadFleet;
using vptzd::SimulatedFleet;

// What is told about a text, with the line in front.
std::string Complaint(const std::string& text) {
  try {
    ReadFleet(text, 2);
    return "none";
  } catch (const vptzd::DocumentError& error) {
    return std::to_string(error.line()) + ": " + error.what();
  }
}

TEST(SimulatedFleet, BuiltInOneHasKnownCamerasAndFourToBeFound) {
  const SimulatedFleet fleet = ReadFleet("{}", 3);
  ASSERT_EQ(fleet.cameras.size(), 7u);
  EXPECT_TRUE(fleet.cameras[2].known);
  EXPECT_EQ(fleet.cameras[2].service_uri, "http://192.0.2.3/onvif/device_service");
  EXPECT_FALSE(fleet.cameras[3].known);
  EXPECT_EQ(fleet.cameras[5].protocol, "NDIHX");
  EXPECT_EQ(fleet.search_time, 1000ms);
}

TEST(SimulatedFleet, FileDescribesItsCameras) {
  const SimulatedFleet fleet = ReadFleet(R"({
    "search_time": 250,
    "cameras": [
      {"protocol": "NDI", "name": "Choir", "address": "198.51.100.3", "user": "u", "password": ")" VPTZ_TEST_CANARY
                                         R"(", "delay": 70,
       "known": false, "removable": false, "manufacturer": "M", "model": "X", "firmware": "9", "tilt": null,
       "pan": {"min": -5, "max": 5.5, "speed": 2, "acceleration": 4},
       "presets": [{"name": "Left", "pan": -5}, {"token": "right", "pan": 5, "zoom": 3}]},
      {"protocol": "RS232", "address": "rs232:///dev/ttyS0/8N1/9600/1"},
      {"count": 2, "name": "Aisle"}]})",
                                         2);
  ASSERT_EQ(fleet.cameras.size(), 4u);
  EXPECT_EQ(fleet.search_time, 250ms);
  const vptzd::CameraDescription& choir = fleet.cameras[0];
  EXPECT_EQ(choir.name, "Choir");
  EXPECT_EQ(choir.service_uri, "http://198.51.100.3/ndi");
  EXPECT_EQ(choir.credentials, (vptzd::Credentials{"u", VPTZ_TEST_CANARY}));
  EXPECT_EQ(choir.delay, 70ms);
  EXPECT_FALSE(choir.known);
  EXPECT_FALSE(choir.removable);
  EXPECT_EQ(choir.manufacturer + choir.model + choir.firmware, "MX9");
  EXPECT_FALSE(choir.axes[vptzd::kTilt].has_value());
  EXPECT_EQ(choir.axes[vptzd::kPan]->max, 5.5);
  EXPECT_EQ(choir.axes[vptzd::kPan]->acceleration, 4.0);
  ASSERT_EQ(choir.presets.size(), 2u);
  EXPECT_EQ(choir.presets[0].token, "preset1");
  EXPECT_EQ(choir.presets[1].position[vptzd::kZoom], 3.0);
  EXPECT_EQ(fleet.cameras[1].address, "/dev/ttyS0");
  EXPECT_EQ(fleet.cameras[3].name, "Aisle-2");
  EXPECT_EQ(fleet.cameras[3].address, "192.0.2.4");
}

TEST(SimulatedFleet, FileDescribesItsFaults) {
  const SimulatedFleet fleet =
      ReadFleet(R"({"faults": [{"kind": "delay", "camera": 1, "method": "login", "milliseconds": 5},
                                               {"kind": "lose_power", "camera": "camera-2"}]})",
                2);
  ASSERT_EQ(fleet.faults.size(), 2u);
  EXPECT_EQ(fleet.faults[0].kind, vptzd::FaultKind::kDelay);
  EXPECT_EQ(fleet.faults[0].camera_number, 1u);
  EXPECT_EQ(fleet.faults[0].method, "login");
  EXPECT_EQ(fleet.faults[0].time, 5ms);
  EXPECT_EQ(fleet.faults[1].camera_name, "camera-2");
  EXPECT_EQ(fleet.faults[1].time, 500ms);
}

TEST(SimulatedFleet, MistakesAreToldWithTheirLine) {
  EXPECT_THAT(Complaint(""), HasSubstr("1: this is no JSON"));
  EXPECT_THAT(Complaint("{\n\n \"cameras\": [}"), HasSubstr("3: this is no JSON"));
  EXPECT_THAT(Complaint("[]"), HasSubstr("1: the fleet is to be an object"));
  EXPECT_THAT(Complaint("{\"cameras\": 5\n}"), HasSubstr("1: \"cameras\" of the fleet is to be a list"));
  EXPECT_THAT(Complaint("{\n\"camera\": []}"), HasSubstr("2: the fleet has no \"camera\""));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"count\":\n1.5}]}"),
              HasSubstr("2: \"count\" of a camera is to be a whole"));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"count\":\n257}]}"),
              HasSubstr("2: \"count\" of a camera is to be 1 to 256"));
  EXPECT_THAT(Complaint("{\"cameras\": [\n{\"pan\": {\"min\": 5,\n \"max\": 5}}]}"),
              HasSubstr("2: the \"min\" of axis pan"));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"pan\": {\"speed\":\n\n0}}]}"),
              HasSubstr("3: \"speed\" of axis pan"));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"presets\": [{},\n{\"token\": \"preset1\"}]}]}"),
              HasSubstr("2: the token \"preset1\" is there twice"));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"address\": \"a\"},\n{\"address\": \"a\"}]}"),
              HasSubstr("2: another camera has the address a"));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"address\": \"a\", \"count\": 2}]}"), HasSubstr("several cameras"));
  EXPECT_THAT(Complaint("{\"cameras\": [{\"protocol\": \"RS232\"}]}"), HasSubstr("rs232://PORT"));
  EXPECT_THAT(Complaint("{\"search_time\": 1,\n \"search_time\": 2}"),
              HasSubstr("2: \"search_time\" is there twice"));
  EXPECT_THAT(Complaint("{\"faults\": [\n{\"kind\": \"sulk\"}]}"), HasSubstr("2: \"kind\" of a fault"));
  EXPECT_THAT(Complaint("{\"faults\": [{\"kind\": \"drop\", \"method\":\n\"logon\"}]}"),
              HasSubstr("2: \"method\""));
  EXPECT_THAT(Complaint("{\"faults\": [{\"kind\": \"drop\",\n\"camera\": 7}]}"),
              HasSubstr("2: \"camera\" of a fault"));
  EXPECT_THAT(Complaint(std::string(100000, '[')), HasSubstr("too many values in one another"));
}

TEST(SimulatedFleet, MissingFileIsTold) {
  try {
    vptzd::ReadFleetFile("/nowhere/fleet.json", 1);
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "cannot read /nowhere/fleet.json: No such file or directory");
  }
}

TEST(Addresses, AreTakenApart) {
  const auto address = vptzd::ReadAddress("rtsp://192.0.2.1:554/main");
  ASSERT_TRUE(address);
  EXPECT_EQ(address->scheme, "rtsp");
  EXPECT_EQ(address->host, "192.0.2.1");
  EXPECT_EQ(address->port, "554");
  EXPECT_EQ(address->path, "/main");
  EXPECT_EQ(vptzd::ReadAddress("[2001:db8::1]")->host, "[2001:db8::1]");
  EXPECT_FALSE(vptzd::ReadAddress("http:///path"));
  EXPECT_FALSE(vptzd::ReadAddress(""));
}

TEST(Addresses, SerialOnesAreReadAndWritten) {
  const auto address = vptzd::ReadSerialAddress("rs232:///dev/ttyS0/8N1/9600/1");
  ASSERT_TRUE(address);
  EXPECT_EQ(address->port, "/dev/ttyS0");
  EXPECT_EQ(address->line, "8N1");
  EXPECT_EQ(vptzd::SerialUri(*address), "rs232:///dev/ttyS0/8N1/9600/1");
  EXPECT_FALSE(vptzd::ReadSerialAddress("rs232://COM1/8N1/-9600/1"));
}

}  // namespace
}  // namespace vptz_test
