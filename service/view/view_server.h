// Serves the web page on which the simulated cameras are seen: on loopback only,
// read-only, to whoever has a browser on this machine.
#ifndef VPTZ_SERVICE_VIEW_VIEW_SERVER_H
#define VPTZ_SERVICE_VIEW_VIEW_SERVER_H

#include <functional>
#include <memory>
#include <vector>

#include "view/camera_view.h"

namespace vptzd {

class ViewServer {
 public:
  using ReadCameras = std::function<std::vector<CameraView>()>;

  // `read_cameras` is called on the server's own threads, also by several at
  // once, until the destructor has returned.
  explicit ViewServer(ReadCameras read_cameras);
  ~ViewServer();
  ViewServer(const ViewServer&) = delete;
  ViewServer& operator=(const ViewServer&) = delete;

  // Begins to serve; port 0 takes any that is free. The port, or a negative
  // errno value: -EADDRINUSE when it cannot be had.
  int Start(int port);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace vptzd

#endif
