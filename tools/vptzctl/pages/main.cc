// Writes the completion scripts and vptzctl.1 into a folder.
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>

#include "pages.h"

namespace {

void Write(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text << std::flush;
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::runtime_error("usage: vptzctl_pages FOLDER");
    const std::string folder = argv[1];
    Write(folder + "/vptzctl.bash", vptzctl::BashCompletion());
    Write(folder + "/vptzctl.zsh", vptzctl::ZshCompletion());
    Write(folder + "/vptzctl.fish", vptzctl::FishCompletion());
    Write(folder + "/vptzctl.1", vptzctl::ManualPage());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vptzctl_pages: %s\n", error.what());
    return 1;
  }
}
