#include "browser.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <unistd.h>

#include <exception>
#include <fstream>
#include <iterator>
#include <thread>
#include <utility>

#include "support/temp_dir.h"

namespace vptz_test {
namespace {

constexpr char kBegin[] = "<pre id=\"report\">";

std::string MeasuringPage(int width) {
  std::ifstream file(VPTZ_MEASURING_PAGE);
  return "<script>const kWidth = " + std::to_string(width) + ";</script>" +
         std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> Browser(const std::string& profile, int port,
                                 const std::vector<std::string>& options) {
  std::vector<std::string> words = {
      VPTZ_CHROMIUM, "--headless", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
      // It talks to nobody but us.
      "--disable-quic", "--disable-background-networking", "--disable-component-update", "--disable-sync",
      "--no-first-run", "--dump-dom", "--virtual-time-budget=2000", "--user-data-dir=" + profile};
  if (geteuid() == 0) words.push_back("--no-sandbox");
  words.insert(words.end(), options.begin(), options.end());
  words.push_back("http://127.0.0.1:" + std::to_string(port) + "/");
  return words;
}

// Serves the page in a frame of the page that measures it: a browser's own
// window has a least width.
class Frame {
 public:
  Frame(vptzd::ViewServer::ReadCameras read_cameras, int width)
      : view_(std::move(read_cameras)), port_(view_.Start(0)) {
    server_.Get("/", [width](const httplib::Request&, httplib::Response& response) {
      response.set_content(MeasuringPage(width), "text/html; charset=utf-8");
    });
    server_.Get("/view/(.*)", [this](const httplib::Request& request, httplib::Response& response) {
      const auto answer = httplib::Client("127.0.0.1", port_).Get("/" + std::string(request.matches[1]));
      response.set_content(answer->body, answer->get_header_value("Content-Type"));
    });
    own_port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }

  ~Frame() {
    server_.stop();
    thread_.join();
  }

  int port() const { return own_port_; }

 private:
  vptzd::ViewServer view_;
  int port_;
  int own_port_ = 0;
  httplib::Server server_;
  std::thread thread_;
};

}  // namespace

// A browser that hangs is started anew: it is the page that is tested.
RunResult Shown(int port, const std::vector<std::string>& options) {
  for (int tries = 3;; --tries) {
    const TempDir profile;
    try {
      return Run(Browser(profile.path(), port, options), {"HOME=" + profile.path()}, "",
                 std::chrono::seconds(30));
    } catch (const std::exception&) {
      if (tries == 1) throw;
    }
  }
}

nlohmann::json Measured(vptzd::ViewServer::ReadCameras read_cameras, int width,
                        const std::vector<std::string>& options) {
  const Frame frame(std::move(read_cameras), width);
  const RunResult page = Shown(frame.port(), options);
  const std::size_t begin = page.output.find(kBegin) + sizeof kBegin - 1;
  const std::string report = page.output.substr(begin, page.output.find("</pre>", begin) - begin);
  const auto measured = nlohmann::json::parse(report, nullptr, false);
  EXPECT_TRUE(measured.is_object()) << page.errors << page.output;
  return measured;
}

nlohmann::json Measured(const std::vector<vptzd::CameraView>& cameras, int width,
                        const std::vector<std::string>& options) {
  return Measured([cameras] { return cameras; }, width, options);
}

}  // namespace vptz_test
