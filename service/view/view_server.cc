#include "view/view_server.h"

#include <httplib.h>

#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <utility>

#include "view_page.h"

namespace vptzd {
namespace {

constexpr char kLoopback[] = "127.0.0.1";
constexpr std::size_t kThreads = 32;  // requests at once; others wait

// What a silent connection keeps a thread for, so that many of them keep nobody
// waiting for long; a browser on this machine sends its request at once.
constexpr std::chrono::seconds kPatience{1};
constexpr std::size_t kMaxBody = 8192;

using Json = nlohmann::ordered_json;

Json JsonOf(const AxisView& axis) {
  return {{"position", axis.position}, {"speed", axis.speed}, {"min", axis.min}, {"max", axis.max}};
}

Json JsonOf(const CameraView& camera) {
  return {{"device", camera.device},
          {"ptz", camera.ptz},
          {"name", camera.name},
          {"protocol", camera.protocol},
          {"powered", camera.powered},
          {"online", camera.online},
          {"logged_in", camera.logged_in},
          {"pan", JsonOf(camera.pan)},
          {"tilt", JsonOf(camera.tilt)},
          {"zoom", JsonOf(camera.zoom)},
          {"brightness", camera.brightness},
          {"contrast", camera.contrast},
          {"sharpness", camera.sharpness},
          {"auto_focus", camera.auto_focus},
          {"blur", camera.blur},
          {"track_mode", camera.track_mode},
          {"presets", camera.presets}};
}

std::string CamerasText(const std::vector<CameraView>& cameras) {
  Json all = Json::array();
  for (const CameraView& camera : cameras) all.push_back(JsonOf(camera));
  return all.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// A page from elsewhere may make a browser ask us under a name of its own; only
// the names of this machine are answered.
bool IsOurName(const std::string& host) {
  const std::string name = host.substr(0, host.rfind(':'));
  return name == kLoopback || name == "localhost";
}

httplib::Server::HandlerResponse RefuseForeignNames(const httplib::Request& request,
                                                    httplib::Response& response) {
  response.set_header("Cache-Control", "no-store");
  if (IsOurName(request.get_header_value("Host"))) return httplib::Server::HandlerResponse::Unhandled;
  response.status = 403;
  return httplib::Server::HandlerResponse::Handled;
}

void ServePage(const httplib::Request&, httplib::Response& response) {
  response.set_header("Content-Security-Policy",
                      "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
                      "connect-src 'self'; img-src data:");
  response.set_content(kViewPage, "text/html; charset=utf-8");
}

}  // namespace

struct ViewServer::Impl {
  ReadCameras read_cameras;
  httplib::Server server;
  std::thread thread;
};

ViewServer::ViewServer(ReadCameras read_cameras) : impl_(std::make_unique<Impl>()) {
  impl_->read_cameras = std::move(read_cameras);
  httplib::Server& server = impl_->server;
  server.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
  // The library's own options would let two servers share a port.
  server.set_socket_options([](socket_t socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  server.set_keep_alive_max_count(1);  // an open page must not keep a thread
  server.set_keep_alive_timeout(kPatience.count());
  server.set_read_timeout(kPatience);
  server.set_payload_max_length(kMaxBody);
  server.set_pre_routing_handler(RefuseForeignNames);
  server.Get("/", ServePage);
  server.Get("/cameras", [this](const httplib::Request&, httplib::Response& response) {
    response.set_content(CamerasText(impl_->read_cameras()), "application/json");
  });
}

ViewServer::~ViewServer() {
  impl_->server.stop();
  if (impl_->thread.joinable()) impl_->thread.join();
}

int ViewServer::Start(int port) {
  httplib::Server& server = impl_->server;
  if (port == 0) {
    port = server.bind_to_any_port(kLoopback);
    if (port < 0) return -EADDRINUSE;
  } else if (!server.bind_to_port(kLoopback, port)) {
    return -EADDRINUSE;
  }
  impl_->thread = std::thread([&server] { server.listen_after_bind(); });
  while (!server.is_running()) std::this_thread::yield();
  return port;
}

}  // namespace vptzd
