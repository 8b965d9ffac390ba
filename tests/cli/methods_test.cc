// What each command asks of the service, and the shape of its answer.
#include <mutex>
#include <set>

#include "cli_test.h"
#include "command.h"
#include "fake_service.h"

namespace {

using vptz_test::BusTest;
using vptz_test::FakeService;
using vptz_test::Words;

struct MethodCase {
  const char* line;     // "@" stands for the test's folder
  const char* methods;  // in the order of the calls
};

// What the library asks for each of two cameras with two streams when it
// rebuilds its registry.
#define REGISTRY_OF_ONE_CAMERA "query_nat_uri query_nat_uri query_nat_uri query_nat_uri "
#define REGISTRY REGISTRY_OF_ONE_CAMERA REGISTRY_OF_ONE_CAMERA

constexpr MethodCase kMethods[] = {
    {"status", "get_status"},
    {"search", "search_device"},
    {"device list", ""},
    {"device show 1", ""},
    {"device add NDI 192.0.2.9", "add_device"},
    {"device add-onvif 192.0.2.9", "add_onvif_device_manually"},
    {"device add-serial ttyS0", "add_device"},
    {"device remove 1", "remove_device"},
    {"device login 1 admin --password-file @/vptz.conf", "login"},
    {"device logout 1", "logout"},
    {"device info 1", "update_device_info"},
    {"device info 1 --full", "update_device_info_full"},
    {"device capabilities 1", "get_capabilities"},
    {"device protocol 1 NDI", "update_device_control_protocol"},
    {"device rename 1 Stage", "add_device"},
    {"device slave 1 --address 192.0.2.9", "set_slave_device"},
    {"device slave 1 --none", "set_slave_device"},
    {"device declare 1", "add_device query_nat_uri query_nat_uri"},
    {"ptz move 1 --pan 1", "absolute_move"},
    {"ptz drive 1 --pan 1", "continuous_move"},
    {"ptz stop 1", "ptz_stop"},
    {"ptz home 1", "goto_home"},
    {"ptz home 1 --set", "set_home"},
    {"ptz track 1 1", "set_track_mode"},
    {"ptz refresh 1", "update_ptz_status"},
    {"ptz position 1", "get_ptz_profiles"},
    {"ptz watch 1 --until-still --interval 0.01", "get_ptz_profiles get_ptz_profiles"},
    {"profile ptz 1", "get_ptz_profiles"},
    {"profile media 1", "get_media_profiles"},
    {"preset list 1", ""},
    {"preset goto 1 preset1", "goto_preset"},
    {"preset goto 1 --id 1", "goto_preset"},
    {"preset set 1 preset9", "set_preset"},
    {"preset set 1 --id 1", "set_preset"},
    {"preset remove 1 preset1", "remove_preset"},
    {"preset remove 1 --id 1", "remove_preset"},
    {"preset export 1", ""},
    {"preset refresh 1", "update_device_presets"},
    {"preset refresh 1 --profile 1", "update_presets"},
    {"image show 1", "get_media_profiles"},
    {"image set 1 --brightness 1", "set_imaging_settings"},
    {"image set 1 --contrast 1 --all", "set_imaging_settings set_imaging_settings"},
    {"focus far 1", "focus_far"},
    {"focus near 1", "focus_near"},
    {"focus stop 1", "focus_stop"},
    {"focus switch 1", "switch_focus_mode"},
    {"nat enable 1 --type http", "enable_nat " REGISTRY "query_nat_uri"},
    {"nat disable 1 --type service", "disable_nat " REGISTRY "query_nat_uri"},
    {"nat query 1", "query_nat_uri query_nat_uri query_nat_uri query_nat_uri"},
    {"nat query 1 --type http", "query_nat_uri"},
    {"nat clear", "clear_nat"},
    {"serial line ttyS0", "update_all_rs232_devices"},
    {"serial add a", "add_usb_tty_device"},
    {"serial remove a", "remove_usb_tty_device"},
    {"serial flush", "flush_usb_tty_devices"},
    {"serial config", "config_devices"},
    {"serial reset2p0 on", "enable_reset2P0"},
    {"serial reset2p0 off", "disable_reset2P0"},
    {"power on", "power_on_devices"},
    {"power off", "power_off_devices"},
    {"power status", "get_devices_power_status"},
    {"fault list", "simulate_faults"},
    {"fault add delay --camera 1 --milliseconds 5", "simulate_faults simulate_faults"},
    {"fault clear", "simulate_faults"},
    {"db show", ""},
    {"db show @/vptz.db", ""},
    {"db create @/new.db", ""},
    {"db migrate @/vptz.db", ""},
};

// Commands whose output is no single object; they have tests of their own.
const std::set<std::string> kStreams = {"help", "monitor", "preset import", "shell"};

// Whether two values have the same members in the same order, their objects and
// arrays too. What is not known, or empty, has any shape.
bool SameShape(const vptz_test::OrderedJson& one, const vptz_test::OrderedJson& other) {
  if (one.is_null() || other.is_null()) return true;
  if (one.is_array() != other.is_array() || one.is_object() != other.is_object()) return false;
  if (one.is_array()) return one.empty() || other.empty() || SameShape(one.front(), other.front());
  if (!one.is_object()) return true;
  if (one.size() != other.size()) return false;
  auto match = other.items().begin();
  for (const auto& [name, member] : one.items()) {
    if (name != match.key() || !SameShape(member, match.value())) return false;
    ++match;
  }
  return true;
}

// The object that the documentation shows for a command: its last one.
vptz_test::OrderedJson Documented(const std::string& command) {
  const std::string page = vptz_test::Page();
  const std::string opening = "\n```json\n";
  const std::size_t begin = page.find(opening, page.find("\n### `" + command + "`")) + opening.size();
  const std::string block = page.substr(begin, page.find("\n```", begin) - begin);
  return vptz_test::OrderedJson::parse(block.substr(block.rfind('\n') + 1));
}

std::string Replaced(std::string text, const std::string& folder) {
  const std::size_t at = text.find('@');
  return at == std::string::npos ? text : text.replace(at, 1, folder);
}

// Answers everything with 0, and ends a search at once.
class MethodTest : public BusTest, public testing::WithParamInterface<MethodCase> {
 protected:
  MethodTest()
      : service(broker.address(), [this](bus_request* request) {
          const std::string method = bus_request_method(request);
          {
            const std::lock_guard<std::mutex> lock(mutex_);
            called_.push_back(method);
          }
          vptz_test::AnsweringStatus(0)(request);
          if (method == "search_device") service.Emit("finish/search_device");
        }) {}

  std::string Line() const { return Replaced(GetParam().line, broker.folder()); }

  Words Called() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return called_;
  }

 private:
  std::mutex mutex_;
  Words called_;

 protected:
  FakeService service;  // the last: it calls while the others are there
};

INSTANTIATE_TEST_SUITE_P(Methods, MethodTest, testing::ValuesIn(kMethods), [](const auto& info) {
  std::string name = std::to_string(info.index) + "_";
  for (const char c : std::string(info.param.line)) {
    if (std::isalnum(static_cast<unsigned char>(c))) name += c;
  }
  return name;
});

TEST_P(MethodTest, IsAllThatIsCalled) {
  const vptz_test::RunResult result = Ctl(Line());
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(Called(), vptz_test::Split(GetParam().methods));
}

TEST_P(MethodTest, AnswersInTheShapeThatThePageShows) {
  const std::string output = Ctl(Line() + " --json").output;
  const std::string last = output.substr(output.rfind('\n', output.size() - 2) + 1);
  const auto object = vptz_test::OrderedJson::parse(last);
  EXPECT_EQ(object["status"], 0) << output;
  const auto documented = Documented(object["command"]);
  EXPECT_TRUE(SameShape(object, documented)) << object << " is not documented as " << documented;
}

TEST(MethodsTest, NoCommandIsForgottenHere) {
  std::set<std::string> untested;
  for (const vptzctl::Command& command : vptzctl::Commands()) untested.insert(command.Name());
  for (const MethodCase& row : kMethods) {
    for (const vptzctl::Command& command : vptzctl::Commands()) {
      if ((std::string(row.line) + " ").rfind(command.Name() + " ", 0) == 0) untested.erase(command.Name());
    }
  }
  EXPECT_EQ(untested, kStreams);
}

}  // namespace
