// A client in a process of its own.
//   reliability_client connect ADDRESS [USER-ID]
//     connects, as that user if one is named, and makes a call if that succeeds;
//     writes the result and the time in milliseconds; then "cured" when calls can
//     be made
//   reliability_client secrets ADDRESS
//     reads a secret from standard input and hands it to everything that takes
//     one, at a broker where some of that fails; then writes "done"
// Both go on until standard input ends.
#include <dorv_bus.h>
#include <poll.h>
#include <unistd.h>
#include <vptz/model/device.h>
#include <vptz/model/vptzmodel.h>
#include <vptz/vptz_client.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "installed_paths.h"

namespace {

using Clock = std::chrono::steady_clock;

void WriteLine(const std::string& text) {
  const std::string line = text + '\n';
  if (write(STDOUT_FILENO, line.data(), line.size()) < 0) std::perror("write");
}

bool InputEndsWithin(int milliseconds) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, milliseconds) != 0;
}

// Nobody serves the name; to be told so takes a connection.
int Ask(bus_client* client) {
  int length = 0;
  return bus_method_call_sync(client, "nobody", "ask", nullptr, 0, nullptr, &length, 1);
}

int Connect(const char* address) {
  bus_client* const client = bus_client_new("reliability");
  const auto begin = Clock::now();
  const int connected = bus_connect(client, address);
  const int result = connected < 0 ? connected : Ask(client);
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
  WriteLine(std::to_string(result) + " " + std::to_string(took.count()));
  bool cured = false;
  while (!InputEndsWithin(20)) {
    if (!cured && Ask(client) == -ESRCH) {
      cured = true;
      WriteLine("cured");
    }
  }
  bus_client_free(client);
  return 0;
}

void UseCommands(VptzClient& client, const std::string& secret) {
  const std::string no_utf8 = secret + "\xff";
  for (const std::string& text : {secret, no_utf8, secret + std::string(100000, 'x')}) {
    client.Login(1, "desk", text, 1);
    client.AddDevice("mac", "name", "ONVIF", "address", "desk", text, 1);
    client.SetSlaveDevice(1, "address", "desk", text, 1);
    client.CallSync(text.c_str(), text.data(), static_cast<int>(text.size()), nullptr, nullptr, 1);
  }
  client.SetSlaveDeviceById(1, 2, 1);
}

void UseDatabase(const std::string& secret) {
  const std::string script = std::string(vptz::DatabaseFile()) + ".sql";
  std::ofstream(script) << "INSERT INTO nowhere VALUES ('" << secret << "');\n";
  VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", script);
  for (int i = 1; i <= 2; ++i) {
    Device device;
    device.set_host_name("device");
    device.set_uuid("the same");
    // Looks like a credentials text, and is none.
    device.set_authorization("{\"account\": \"desk\", \"credentials\": \"" + secret);
    Device::Add(&device);
    device.set_id(1000);
    Device::Update(device);
  }
}

// Each kind of settings in turn: right, wrong, and in a file that cannot be read.
void ConnectWith(const std::string& settings, const std::string& address, const std::string& secret) {
  const std::string path = std::string(vptz::ConfigFile()) + ".bus";
  std::ofstream(path) << settings;
  setenv("DORV_BUS_SETTINGS", path.c_str(), 1);
  VptzClient client;
  WriteLine("connect " + std::to_string(client.Connect("reliability", address.c_str())));
  UseDatabase(secret);
  client.LoadDevices();
  UseCommands(client, secret);
}

int Secrets(const std::string& address) {
  char line[256] = "";
  if (std::fgets(line, sizeof line, stdin) == nullptr) return 1;
  const std::string secret(line, std::strcspn(line, "\n"));
  std::ofstream(vptz::ConfigFile()) << "[MQTT]\ntimeout=1\n" << secret << " is no key\n";
  ConnectWith("[broker]\nuser=desk\npassword=" + secret + "\n", address, secret);
  std::ofstream(vptz::ConfigFile()) << "[MQTT]\ntimeout=1\npassword=" << secret << "\n";
  ConnectWith("[broker]\nuser=desk\npassword=" + secret + "\n", address, secret);
  ConnectWith("[broker]\nuser=desk\npassword=" + secret + "-wrong\n", address, secret);
  ConnectWith("[broker]\nuser=desk\npassword " + secret + "\n", address, secret);
  ConnectWith("[broker]\nuser=" + secret + "\npassword_file=/nonexistent/file\n", address, secret);
  WriteLine("done");
  while (!InputEndsWithin(1000)) {
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[1] : "";
  if (argc > 3 && setuid(static_cast<uid_t>(std::atoi(argv[3]))) != 0) return 1;
  if (mode == "connect") return Connect(argv[2]);
  return mode == "secrets" ? Secrets(argv[2]) : 1;
}
