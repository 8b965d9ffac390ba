// What each command asks of the service.
#include <mutex>
#include <set>

#include "cli_test.h"
#include "command.h"
#include "fake_service.h"

namespace {

using vptz_test::BusTest;
using vptz_test::FakeService;

struct MethodCase {
  const char* line;
  const char* method;
};

// The names in an object, of its objects too, in their order.
std::string Shape(const vptz_test::OrderedJson& object) {
  std::string shape;
  for (const auto& [name, value] : object.items()) {
    shape += name + (value.is_object() ? "{" + Shape(value) + "} " : " ");
  }
  return shape;
}

// The object that the documentation shows for a command.
vptz_test::OrderedJson Documented(const std::string& command) {
  const std::string page = vptz_test::Page();
  const std::string opening = "\n```json\n";
  const std::size_t begin = page.find(opening, page.find("\n### `" + command + "`")) + opening.size();
  return vptz_test::OrderedJson::parse(page.substr(begin, page.find('\n', begin) - begin));
}

class MethodTest : public BusTest, public testing::WithParamInterface<MethodCase> {};

constexpr MethodCase kMethods[] = {
    {"status", "get_status"},
    {"move to 1 --pan 1", "absolute_move"},
    {"move at 1 --pan 1", "continuous_move"},
    {"stop 1", "ptz_stop"},
    {"home 1", "goto_home"},
    {"home 1 --set", "set_home"},
    {"track 1 1", "set_track_mode"},
    {"position 1", "get_ptz_profiles"},
    {"media 1", "get_media_profiles"},
    {"serial add a", "add_usb_tty_device"},
    {"serial remove a", "remove_usb_tty_device"},
    {"serial flush", "flush_usb_tty_devices"},
    {"serial config", "config_devices"},
    {"serial reset2p0 on", "enable_reset2P0"},
    {"serial reset2p0 off", "disable_reset2P0"},
    {"power on", "power_on_devices"},
    {"power off", "power_off_devices"},
    {"power status", "get_devices_power_status"},
};

INSTANTIATE_TEST_SUITE_P(Methods, MethodTest, testing::ValuesIn(kMethods),
                         [](const auto& info) { return std::string(info.param.method); });

TEST_P(MethodTest, IsTheOnlyOneCalledAndOnce) {
  std::mutex mutex;
  std::vector<std::string> called;
  const FakeService service(broker.address(), [&](bus_request* request) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      called.emplace_back(bus_request_method(request));
    }
    vptz_test::AnsweringStatus(0)(request);
  });
  EXPECT_EQ(CtlJson(GetParam().line)["status"], 0);
  const std::lock_guard<std::mutex> lock(mutex);
  EXPECT_THAT(called, testing::ElementsAre(GetParam().method));
}

TEST_P(MethodTest, AnswersInTheShapeThatThePageShows) {
  const FakeService service(broker.address(), vptz_test::AnsweringStatus(0));
  const std::string output = Ctl(GetParam().line + std::string(" --json")).output;
  const auto object = vptz_test::OrderedJson::parse(output);
  EXPECT_EQ(Shape(object), Shape(Documented(object["command"])));
}

TEST(MethodsTest, NoCommandIsForgottenHere) {
  std::set<std::string> untested;
  for (const vptzctl::Command& command : vptzctl::Commands()) untested.insert(command.Name());
  for (const MethodCase& row : kMethods) {
    for (const vptzctl::Command& command : vptzctl::Commands()) {
      if ((std::string(row.line) + " ").rfind(command.Name() + " ", 0) == 0) untested.erase(command.Name());
    }
  }
  EXPECT_THAT(untested, testing::IsEmpty());
}

}  // namespace
