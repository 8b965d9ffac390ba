#include "integration/shipped_broker.h"

#include <grp.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "support/passwords.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

// Root plays the users of an installed system under numbers that nobody has.
// Anybody else is all of them himself.
constexpr gid_t kGroup = 61900;
constexpr uid_t kBroker = 61901;
constexpr uid_t kStranger = 61902;

const std::string kPackaging = VPTZ_PACKAGING;

bool IsRoot() { return geteuid() == 0; }

void Check(int result, const std::string& what) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

std::string Contents(const std::string& path) {
  const std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

// With the group and, when it is a number, the user in front.
std::vector<std::string> As(const std::string& user, std::vector<std::string> command) {
  if (!IsRoot()) return command;
  std::vector<std::string> words = {"setpriv", "--pdeathsig", "KILL", "--clear-groups",
                                    "--regid=" + std::to_string(kGroup)};
  if (!user.empty()) words.push_back("--reuid=" + user);
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

// While it lives, processes start with the mask of a unit.
class Mask {
 public:
  explicit Mask(const std::string& unit) : before_(umask(UnitMode(unit, "UMask"))) {}
  ~Mask() { umask(before_); }
  Mask(const Mask&) = delete;
  Mask& operator=(const Mask&) = delete;

 private:
  mode_t before_;
};

void MakeFolder(const std::string& path, mode_t mode, uid_t user, gid_t group) {
  std::filesystem::create_directories(path);
  if (IsRoot()) Check(chown(path.c_str(), user, group), path);
  Check(chmod(path.c_str(), mode), path);
}

bool Accepts(const std::string& socket_path) {
  const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socket_path.copy(address.sun_path, sizeof address.sun_path - 1);
  return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

std::string UnitSetting(const std::string& unit, const std::string& name) {
  std::istringstream lines(Contents(kPackaging + "/systemd/" + unit));
  std::string line;
  while (std::getline(lines, line)) {
    if (line.compare(0, name.size() + 1, name + "=") == 0) return line.substr(name.size() + 1);
  }
  throw std::runtime_error(unit + " does not set " + name);
}

mode_t UnitMode(const std::string& unit, const std::string& name) {
  return static_cast<mode_t>(std::stoul(UnitSetting(unit, name), nullptr, 8));
}

void BecomeStranger() {
  Check(setgroups(0, nullptr), "setgroups");
  Check(setresgid(kStranger, kStranger, kStranger), "setresgid");
  Check(setresuid(kStranger, kStranger, kStranger), "setresuid");
}

ShippedBroker::ShippedBroker(const std::string& configuration,
                             const std::map<std::string, std::string>& passwords) {
  MakeFolders();
  WriteConfiguration(configuration);
  WritePasswordFile(passwords);
  Start();
}

void ShippedBroker::MakeFolders() const {
  Check(chmod(root_.path().c_str(), 0755), root_.path());
  MakeFolder(settings_folder(), 0755, 0, 0);
  MakeFolder(run_folder(), UnitMode("dorv-bus.service", "RuntimeDirectoryMode"), kBroker, kGroup);
  MakeFolder(state_folder(), UnitMode("vptzd.service", "StateDirectoryMode"), 0, kGroup);
}

void ShippedBroker::WriteConfiguration(const std::string& name) const {
  for (const std::string& file : {name, std::string("broker.acl")}) {
    std::string text = Contents(std::string(kPackaging).append("/").append(file));
    Replace(text, "/run/dorv", run_folder());
    Replace(text, "/etc/dorv", settings_folder());
    std::ofstream(settings_folder() + "/" + (file == name ? "broker.conf" : file)) << text;
  }
}

void ShippedBroker::WritePasswordFile(const std::map<std::string, std::string>& passwords) const {
  const std::string path = settings_folder() + "/broker.passwords";
  WritePasswords(path, passwords);
  if (IsRoot()) Check(chown(path.c_str(), kBroker, kGroup), path);
}

void ShippedBroker::Start() {
  const Mask mask("dorv-bus.service");
  process_.emplace(
      As(std::to_string(kBroker), {"prlimit", "--nofile=" + UnitSetting("dorv-bus.service", "LimitNOFILE"),
                                   VPTZ_MOSQUITTO, "-c", settings_folder() + "/broker.conf"}));
  if (!WaitUntil([&] { return !process_->Running() || Accepts(socket_path()); }) || !process_->Running()) {
    throw std::runtime_error("the broker does not run: " + Log());
  }
}

void ShippedBroker::Restart() {
  process_->Signal(SIGTERM);
  process_->Wait();
  Start();
}

// It keeps the test's user, who alone may be able to reach the program.
void ShippedBroker::StartService(const std::vector<std::string>& environment) {
  std::vector<std::string> variables = {"DORV_BUS_ADDRESS=" + address()};
  variables.insert(variables.end(), environment.begin(), environment.end());
  const Mask mask("vptzd.service");
  service_.emplace(As("", {VPTZD, "--cameras", "2", "--database", database()}), variables);
  const auto serves = [&] { return service_->Output().find("serving") != std::string::npos; };
  if (!WaitUntil([&] { return serves() || !service_->Running(); }) || !service_->Running()) {
    throw std::runtime_error("vptzd does not serve: " + service_->Output() + service_->Errors());
  }
}

}  // namespace vptz_test
