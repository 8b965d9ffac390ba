#include "serial_line.h"

#include "stored.h"

namespace vptzctl {
namespace {

constexpr char kFolder[] = "/dev/";
constexpr std::size_t kFolderLength = sizeof kFolder - 1;

std::string WithoutFolder(const std::string& port) {
  return port.rfind(kFolder, 0) == 0 ? port.substr(kFolderLength) : port;
}

}  // namespace

std::string StoredPort(const std::string& text) {
  for (const StoredCamera& camera : StoredSerialCameras()) {
    if (WithoutFolder(camera.address) == WithoutFolder(text)) return camera.address;
  }
  return text;
}

std::string DevicePath(const std::string& text) {
  const bool is_name = text.rfind("tty", 0) == 0 && text.find('/') == std::string::npos;
  return is_name ? kFolder + text : text;
}

}  // namespace vptzctl
