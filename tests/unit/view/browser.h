// A page as Chromium makes it.
#ifndef VPTZ_TESTS_UNIT_VIEW_BROWSER_H
#define VPTZ_TESTS_UNIT_VIEW_BROWSER_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/process.h"
#include "view/view_server.h"

namespace vptz_test {

// The document that the page of that port has become after two seconds of its
// own time.
RunResult Shown(int port, const std::vector<std::string>& options = {});

// What the page shows of these cameras in a window `width` pixels wide, as
// measuring.html reports it. Fails the test when there is no report.
nlohmann::json Measured(vptzd::ViewServer::ReadCameras read_cameras, int width = 420,
                        const std::vector<std::string>& options = {});
nlohmann::json Measured(const std::vector<vptzd::CameraView>& cameras, int width = 420,
                        const std::vector<std::string>& options = {});

}  // namespace vptz_test

#endif
