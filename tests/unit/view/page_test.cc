// The page as a browser shows it.
#include <gmock/gmock.h>

#include <atomic>

#include "browser.h"
#include "view/view_server.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::RunResult;
using vptz_test::Shown;
using vptzd::CameraView;
using vptzd::ViewServer;

CameraView Camera() {
  CameraView camera;
  camera.device = 3;
  camera.ptz = 4;
  camera.name = "<b>balcony</b>";
  camera.protocol = "NDI";
  camera.tilt = {-7.25, 0, -30, 90};
  camera.zoom = {2, 0, 1, 20};
  camera.presets = {"speaker's desk"};
  return camera;
}

TEST(PageTest, ShowsEachCameraAndFollowsItsMotion) {
  std::atomic<int> readings = 0;
  ViewServer server([&] {
    CameraView camera = Camera();
    camera.pan = {10.0 + ++readings, 5, -170, 170};
    return std::vector<CameraView>{camera};
  });
  const RunResult page = Shown(server.Start(0));
  EXPECT_EQ(page.exit_code, 0) << page.errors;
  EXPECT_THAT(page.output, HasSubstr("&lt;b&gt;balcony&lt;/b&gt;")) << "a name is a text, never markup";
  EXPECT_THAT(page.output, HasSubstr("data-device=\"3\""));
  EXPECT_THAT(page.output, HasSubstr("NDI, device 3, node 4"));
  EXPECT_THAT(page.output, HasSubstr("-7.25°"));
  EXPECT_THAT(page.output, HasSubstr("2.00×"));
  EXPECT_THAT(page.output, HasSubstr("(5.0°/s)"));
  EXPECT_THAT(page.output, HasSubstr("speaker's desk"));
  EXPECT_THAT(page.output, HasSubstr(">live<"));
  EXPECT_GT(readings, 2) << "the page reads again and again";
}

TEST(PageTest, SaysThatACameraHasNoPower) {
  ViewServer server([] {
    CameraView camera = Camera();
    camera.powered = false;
    return std::vector<CameraView>{camera};
  });
  EXPECT_THAT(Shown(server.Start(0)).output, HasSubstr("no power"));
}

TEST(PageTest, SaysThatTheServiceIsNotLoggedIn) {
  ViewServer server([] {
    CameraView camera = Camera();
    camera.logged_in = false;
    return std::vector<CameraView>{camera};
  });
  const std::string page = Shown(server.Start(0)).output;
  EXPECT_THAT(page, HasSubstr(">not logged in<"));
  EXPECT_THAT(page, Not(HasSubstr(">ready<")));
}

TEST(PageTest, ACameraThatIsGoneDisappears) {
  std::atomic<int> readings = 0;
  ViewServer server(
      [&] { return ++readings < 3 ? std::vector<CameraView>{Camera()} : std::vector<CameraView>(); });
  EXPECT_THAT(Shown(server.Start(0)).output, Not(HasSubstr("data-device=\"3\"")));
}

}  // namespace
