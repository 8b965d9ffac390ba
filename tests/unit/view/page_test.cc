// The page as a browser shows it.
#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <exception>

#include "support/process.h"
#include "support/temp_dir.h"
#include "view/view_server.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::RunResult;
using vptz_test::TempDir;
using vptzd::CameraView;
using vptzd::ViewServer;

std::vector<std::string> Browser(const std::string& profile, int port) {
  std::vector<std::string> words = {VPTZ_CHROMIUM,
                                    "--headless",
                                    "--disable-gpu",
                                    "--disable-dev-shm-usage",
                                    "--dump-dom",
                                    "--virtual-time-budget=2000",
                                    "--user-data-dir=" + profile};
  if (geteuid() == 0) words.push_back("--no-sandbox");
  words.push_back("http://127.0.0.1:" + std::to_string(port) + "/");
  return words;
}

// What the page has become after two seconds of its own time. A browser that
// hangs is started anew: it is the page that is tested.
RunResult Shown(int port) {
  for (int tries = 3;; --tries) {
    const TempDir profile;
    try {
      return vptz_test::Run(Browser(profile.path(), port), {"HOME=" + profile.path()}, "",
                            std::chrono::seconds(30));
    } catch (const std::exception&) {
      if (tries == 1) throw;
    }
  }
}

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

TEST(PageTest, ACameraThatIsGoneDisappears) {
  std::atomic<int> readings = 0;
  ViewServer server(
      [&] { return ++readings < 3 ? std::vector<CameraView>{Camera()} : std::vector<CameraView>(); });
  EXPECT_THAT(Shown(server.Start(0)).output, Not(HasSubstr("data-device=\"3\"")));
}

}  // namespace
