#include "view/view_server.h"

#include <gmock/gmock.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <thread>

namespace {

using nlohmann::json;
using testing::HasSubstr;
using vptzd::CameraView;
using vptzd::ViewServer;

CameraView Camera() {
  CameraView camera;
  camera.device = 7;
  camera.ptz = 8;
  camera.name = "balcony";
  camera.protocol = "ONVIF";
  camera.pan = {12.5, -3, -170, 170};
  camera.zoom = {2, 0, 1, 20};
  camera.logged_in = false;
  camera.presets = {"desk"};
  return camera;
}

TEST(ViewServerTest, ServesThePage) {
  ViewServer server([] { return std::vector<CameraView>(); });
  httplib::Client browser("127.0.0.1", server.Start(0));
  const auto answer = browser.Get("/");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
  EXPECT_THAT(answer->get_header_value("Content-Type"), HasSubstr("text/html"));
  EXPECT_THAT(answer->get_header_value("Content-Security-Policy"), HasSubstr("default-src 'none'"));
  EXPECT_THAT(answer->body, HasSubstr("</html>"));
  EXPECT_THAT(answer->body, testing::Not(HasSubstr("https://"))) << "the page must work without internet";
}

TEST(ViewServerTest, TellsWhereTheCamerasAreNow) {
  std::atomic<double> pan = 12.5;
  ViewServer server([&] {
    CameraView camera = Camera();
    camera.pan.position = pan;
    return std::vector<CameraView>{camera};
  });
  httplib::Client browser("127.0.0.1", server.Start(0));
  const json first = json::parse(browser.Get("/cameras")->body);
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(first[0]["device"], 7);
  EXPECT_EQ(first[0]["ptz"], 8);
  EXPECT_EQ(first[0]["name"], "balcony");
  EXPECT_EQ(first[0]["pan"], json({{"position", 12.5}, {"speed", -3.0}, {"min", -170.0}, {"max", 170.0}}));
  EXPECT_EQ(first[0]["logged_in"], false);
  EXPECT_EQ(first[0]["presets"], json({"desk"}));
  pan = 13;
  EXPECT_EQ(json::parse(browser.Get("/cameras")->body)[0]["pan"]["position"], 13.0);
}

TEST(ViewServerTest, ANameThatIsNoUtf8DoesNotBreakTheAnswer) {
  ViewServer server([] {
    CameraView camera = Camera();
    camera.name = "\xff\xfe";
    return std::vector<CameraView>{camera};
  });
  httplib::Client browser("127.0.0.1", server.Start(0));
  EXPECT_EQ(json::parse(browser.Get("/cameras")->body)[0]["device"], 7);
}

TEST(ViewServerTest, AnswersOnlyUnderThisMachinesNames) {
  ViewServer server([] { return std::vector<CameraView>{Camera()}; });
  const int port = server.Start(0);
  httplib::Client browser("127.0.0.1", port);
  EXPECT_EQ(browser.Get("/cameras", {{"Host", "localhost:" + std::to_string(port)}})->status, 200);
  const auto refused = browser.Get("/cameras", {{"Host", "elsewhere.example"}});
  EXPECT_EQ(refused->status, 403);
  EXPECT_EQ(refused->body, "");
}

TEST(ViewServerTest, ReadsOnly) {
  ViewServer server([] { return std::vector<CameraView>{Camera()}; });
  httplib::Client browser("127.0.0.1", server.Start(0));
  EXPECT_EQ(browser.Post("/cameras", "{}", "application/json")->status, 404);
  EXPECT_EQ(browser.Get("/elsewhere")->status, 404);
}

TEST(ViewServerTest, APortThatIsTakenIsRefused) {
  ViewServer first([] { return std::vector<CameraView>(); });
  const int port = first.Start(0);
  ASSERT_GT(port, 0);
  ViewServer second([] { return std::vector<CameraView>(); });
  EXPECT_EQ(second.Start(port), -EADDRINUSE);
}

// Connected to the server, and silent.
class SilentConnection {
 public:
  explicit SilentConnection(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  ~SilentConnection() { close(socket_); }
  SilentConnection(const SilentConnection&) = delete;
  SilentConnection& operator=(const SilentConnection&) = delete;

 private:
  int socket_;
};

TEST(ViewServerTest, SilentConnectionsKeepAPageWaitingForSecondsOnly) {
  ViewServer server([] { return std::vector<CameraView>{Camera()}; });
  const int port = server.Start(0);
  std::deque<SilentConnection> silent;
  for (int i = 0; i < 64; ++i) silent.emplace_back(port);
  httplib::Client browser("127.0.0.1", port);
  browser.set_read_timeout(10);  // a second for each 32 of them, and slack
  const auto answer = browser.Get("/cameras");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
}

TEST(ViewServerTest, EndsWhileABrowserKeepsAsking) {
  auto server = std::make_unique<ViewServer>([] { return std::vector<CameraView>{Camera()}; });
  const int port = server->Start(0);
  std::atomic<bool> asked = false;
  std::thread asker([&] {
    httplib::Client browser("127.0.0.1", port);
    while (browser.Get("/cameras")) asked = true;
  });
  while (!asked) std::this_thread::yield();
  server.reset();
  asker.join();
}

}  // namespace
