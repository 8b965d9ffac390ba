// The fields that commands fill, as they arrive at the service.
#include <mutex>

#include <google/protobuf/text_format.h>

#include "cli_test.h"
#include "fake_service.h"
#include "support/canary.h"

namespace {

using vptz_test::BusTest;
using vptz_test::FakeService;

struct RequestCase {
  const char* line;     // "@" stands for a file that holds a password
  const char* request;  // the first one
};

#define ALONE "-9999999"

constexpr RequestCase kRequests[] = {
    {"search --protocols NDI,ONVIF --scope stage",
     "method_name: 'search_device' device_command { search_scope: 'stage' protocol: 'NDI,ONVIF' }"},
    {"search", "method_name: 'search_device' device_command { search_scope: '' protocol: 'ONVIF,QX310,NDI' }"},
    {"device add VISCA_OVER_IP 192.0.2.9 --name Stage --mac 02:00 --user admin --password-file @",
     "method_name: 'add_device' device_command { mac: '02:00' name: 'Stage' protocol: 'VISCA_OVER_IP' "
     "address: '192.0.2.9' user: 'admin' password: '" VPTZ_TEST_CANARY "' }"},
    {"device add NDI 192.0.2.9",
     "method_name: 'add_device' device_command { mac: '' name: '' protocol: 'NDI' address: '192.0.2.9' user: "
     "'' "
     "password: '' }"},
    {"device add-onvif http://a/ --user admin --password-file @",
     "method_name: 'add_onvif_device_manually' device_command { address: 'http://a/' user: 'admin' "
     "password: '" VPTZ_TEST_CANARY "' }"},
    {"device add-serial ttyS0 --name Stage --line A --baud-rate 38400 --unit 3",
     "method_name: 'add_device' device_command { mac: 'ttyS0' name: 'Stage' protocol: 'RS232' "
     "address: 'rs232://ttyS0/A/38400/3' user: '' password: '' }"},
    {"device remove camera-2", "method_name: 'remove_device' device_command { device_id: 2 }"},
    {"device login 2 admin --password-file @",
     "method_name: 'login' device_command { device_id: 2 user: 'admin' password: '" VPTZ_TEST_CANARY "' }"},
    {"device protocol 1 NDI",
     "method_name: 'update_device_control_protocol' device_command { device_id: 1 protocol: 'NDI' }"},
    {"device rename 1 Stage",
     "method_name: 'add_device' device_command { mac: '02:00:5e:00:53:01' name: 'Stage' protocol: 'ONVIF' "
     "address: "
     "'http://192.0.2.1/onvif/device_service' user: '' password: '' }"},
    {"device slave 1 --address 192.0.2.9 --account admin --password-file @",
     "method_name: 'set_slave_device' slave_device_command { device_id: 1 address: '192.0.2.9' account: "
     "'admin' "
     "credentials: '" VPTZ_TEST_CANARY "' }"},
    {"device slave 2 --none",
     "method_name: 'set_slave_device' slave_device_command { device_id: 2 address: '' account: '' credentials: "
     "'' }"},
    {"device declare 1 --name Left --address 192.0.2.77 --user admin --password-file @",
     "method_name: 'add_device' device_command { mac: '02:00:5e:00:53:01' name: 'Left' protocol: "
     "'VISCA_OVER_IP' "
     "address: '192.0.2.77' user: 'admin' password: '" VPTZ_TEST_CANARY "' }"},
    {"ptz move 2 --tilt 5", "method_name: 'absolute_move' ptz_command { ptz_id: 2 pan_position: " ALONE
                            " tilt_position: 5 zoom_position: " ALONE " pan_speed: " ALONE " tilt_speed: " ALONE
                            " zoom_speed: " ALONE " }"},
    {"preset set 1 left --name Left",
     "method_name: 'set_preset' ptz_command { ptz_id: 1 preset_name: 'Left' "
     "preset_token: 'left' }"},
    {"preset set 1 left",
     "method_name: 'set_preset' ptz_command { ptz_id: 1 preset_name: 'left' "
     "preset_token: 'left' }"},
    {"preset set 1 --id 2",
     "method_name: 'set_preset' ptz_command { ptz_id: 1 preset_name: 'Lectern' "
     "preset_token: 'preset2' }"},
    {"preset goto 1 preset2 --pan-speed 20",
     "method_name: 'goto_preset' ptz_command { ptz_id: 1 preset_token: 'preset2' pan_speed: 20 "
     "tilt_speed: " ALONE " zoom_speed: " ALONE " }"},
    {"preset remove 1 --id 3",
     "method_name: 'remove_preset' ptz_command { ptz_id: 1 preset_token: 'preset3' }"},
    {"image set 1 --profile 2 --sharpness 40",
     "method_name: 'set_imaging_settings' media_command { media_id: 2 brightness: " ALONE " contrast: " ALONE
     " sharpness: 40 backlight_mode: " ALONE " auto_focus: " ALONE " auto_focus_mode: 'DEFAULT' }"},
    {"image set 2 --brightness 1 --contrast 2 --backlight 3 --auto-focus 0 --auto-focus-mode FACE",
     "method_name: 'set_imaging_settings' media_command { media_id: 3 brightness: 1 contrast: 2 "
     "sharpness: " ALONE " backlight_mode: 3 auto_focus: 0 auto_focus_mode: 'FACE' }"},
    {"image set 1 --auto-focus-mode FACE",
     "method_name: 'set_imaging_settings' media_command { media_id: 1 brightness: " ALONE " contrast: " ALONE
     " sharpness: " ALONE " backlight_mode: " ALONE " auto_focus: " ALONE " auto_focus_mode: 'FACE' }"},
    {"image set 1 --backlight ON --auto-focus manual --auto-focus-mode auto",
     "method_name: 'set_imaging_settings' media_command { media_id: 1 brightness: " ALONE " contrast: " ALONE
     " sharpness: " ALONE " backlight_mode: 1 auto_focus: 0 auto_focus_mode: 'AUTO' }"},
    {"image set 1 --auto-focus auto",
     "method_name: 'set_imaging_settings' media_command { media_id: 1 brightness: " ALONE " contrast: " ALONE
     " sharpness: " ALONE " backlight_mode: " ALONE " auto_focus: 1 auto_focus_mode: 'DEFAULT' }"},
    {"device add ndi 192.0.2.9",
     "method_name: 'add_device' device_command { mac: '' name: '' protocol: 'NDI' address: '192.0.2.9' user: "
     "'' "
     "password: '' }"},
    {"device protocol 1 visca_over_ip",
     "method_name: 'update_device_control_protocol' device_command { device_id: 1 protocol: 'VISCA_OVER_IP' }"},
    {"preset set 1",
     "method_name: 'set_preset' ptz_command { ptz_id: 1 preset_name: 'preset4' preset_token: '' }"},
    {"preset goto 1 Lectern",
     "method_name: 'goto_preset' ptz_command { ptz_id: 1 preset_token: 'preset2' pan_speed: " ALONE
     " tilt_speed: " ALONE " zoom_speed: " ALONE " }"},
    {"focus far 1 --drive slow", "method_name: 'focus_far' device_command { device_id: 1 token: 'slow' }"},
    {"focus switch 2 --profile 2", "method_name: 'switch_focus_mode' media_command { media_id: 4 }"},
    {"nat enable 1 --type media --map a,b,,d,e,f,8554,-1 --map ,,,,,,0,0",
     "method_name: 'enable_nat' nat_command { device_id: 1 nat_type: 1 params { text1: 'a' text2: 'b' text3: "
     "'' "
     "text4: 'd' text5: 'e' text6: 'f' number1: 8554 number2: -1 } params { text1: '' text2: '' text3: '' "
     "text4: '' "
     "text5: '' text6: '' number1: 0 number2: 0 } }"},
    {"nat query 1 --type service",
     "method_name: 'query_nat_uri' nat_command { device_id: 1 nat_type: 2 "
     "address: 'http://192.0.2.1/onvif/device_service' }"},
    {"serial line ttyS1 --baud-rate 19200 --unit 2 --flags 5",
     "method_name: 'update_all_rs232_devices' device_command { address: 'rs232://ttyS1/19200/2/5' }"},
};

class RequestTest : public BusTest, public testing::WithParamInterface<RequestCase> {};

INSTANTIATE_TEST_SUITE_P(Requests, RequestTest, testing::ValuesIn(kRequests),
                         [](const auto& info) { return std::to_string(info.index); });

TEST_P(RequestTest, HoldsWhatTheLineSays) {
  std::mutex mutex;
  std::vector<tutorial::VptzCommand> requests;
  const FakeService service(broker.address(), [&](bus_request* request) {
    int length = 0;
    const void* bytes = bus_request_payload(request, &length);
    {
      const std::lock_guard<std::mutex> lock(mutex);
      requests.emplace_back().ParseFromArray(bytes, length);
    }
    vptz_test::AnsweringStatus(-1008)(request);
  });
  std::string line = GetParam().line;
  const std::size_t at = line.find('@');
  if (at != std::string::npos) line.replace(at, 1, Write("password", VPTZ_TEST_CANARY "\n"));
  const vptz_test::RunResult result = Ctl(line);
  EXPECT_EQ(result.exit_code, 1) << result.errors;
  EXPECT_THAT(result.errors, testing::Not(testing::HasSubstr(VPTZ_TEST_CANARY)));
  tutorial::VptzCommand expected;
  ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(GetParam().request, &expected));
  const std::lock_guard<std::mutex> lock(mutex);
  ASSERT_FALSE(requests.empty());
  EXPECT_EQ(requests.front().DebugString(), expected.DebugString());
}

}  // namespace
