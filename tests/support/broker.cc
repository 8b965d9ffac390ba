#include "support/broker.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "support/records.h"
#include "support/wait_until.h"

namespace vptz_test {

Broker::Broker(const std::vector<std::string>& extra_configuration) {
  std::ofstream file(folder_.path() + "/broker.conf");
  file << "listener 0 " << socket_path() << "\nallow_anonymous true\npersistence false\n"
       << "log_dest file " << folder_.path() << "/broker.log\n";
  // Started by root it would become a user who cannot enter the folder.
  if (geteuid() == 0) file << "user root\n";
  for (const std::string& line : extra_configuration) file << line << '\n';
  file.close();
  Start();
}

Broker::~Broker() { Record(Log()); }

void Broker::Kill() {
  process_->Signal(SIGKILL);
  process_->Wait();
}

void Broker::Stop() { process_->Signal(SIGSTOP); }

void Broker::Continue() { process_->Signal(SIGCONT); }

void Broker::Start() {
  const std::size_t told = Log().size();
  process_.emplace(std::vector<std::string>{VPTZ_MOSQUITTO, "-c", folder_.path() + "/broker.conf"});
  // It says so when all its listeners are open.
  const auto runs = [&] { return Log().find(" running\n", told) != std::string::npos && Accepts(); };
  if (!WaitUntil([&] { return !process_->Running() || runs(); }) || !process_->Running()) {
    throw std::runtime_error("the broker does not run: " + process_->Errors() + Log());
  }
}

std::string Broker::Log() const {
  const std::ifstream file(folder_.path() + "/broker.log");
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool Broker::Accepts() const {
  const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socket_path().c_str(), sizeof address.sun_path - 1);
  return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace vptz_test
