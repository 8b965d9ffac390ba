// A password shows up nowhere: in no log, no error text and no list of
// processes, whatever goes wrong.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "reliability/reliability.h"
#include "support/broker.h"
#include "support/canary.h"
#include "support/passwords.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

std::string Contents(const std::filesystem::path& path) {
  const std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool Holds(const std::string& text) { return text.find(kCanary) != std::string::npos; }

// Looks at the command lines of all processes again and again.
class ProcessListWatch {
 public:
  ProcessListWatch() : thread_([this] { Run(); }) {}
  ~ProcessListWatch() { End(); }
  ProcessListWatch(const ProcessListWatch&) = delete;
  ProcessListWatch& operator=(const ProcessListWatch&) = delete;

  int Hits() const { return hits_; }
  int Looks() const { return looks_; }
  void End() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
  }

 private:
  void Run() {
    while (!stop_) {
      std::error_code ignored;
      for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        for (const char* file : {"cmdline", "comm"}) hits_ += Holds(Contents(entry.path() / file)) ? 1 : 0;
      }
      ++looks_;
      Breathe();
    }
  }

  std::atomic<bool> stop_{false};
  std::atomic<int> hits_{0};
  std::atomic<int> looks_{0};
  std::thread thread_;
};

class Secrets : public testing::Test {
 protected:
  std::vector<std::string> PasswordLines() const {
    const std::string path = folder_.path() + "/passwords";
    WritePasswords(path, {{"desk", kCanary}});
    return {"allow_anonymous false", "password_file " + path, "log_type all", "max_packet_size 65536"};
  }

  TempDir folder_;
};

TEST_F(Secrets, AreInNoLogErrorTextAndProcessList) {
  const Broker broker(PasswordLines());
  const std::string log = folder_.path() + "/log";
  ProcessListWatch processes;
  Process client(
      {VPTZ_RELIABILITY_CLIENT, "secrets", broker.address()},
      {"ZERK_LOG_LEVEL=detail", "ZERK_LOG_TARGET=file:" + log, "VPTZ_TEST_FOLDER=" + folder_.path()});
  client.Write(std::string(kCanary) + "\n");
  EXPECT_TRUE(
      WaitUntil([&] { return client.Output().find("done\n") != std::string::npos || !client.Running(); },
                std::chrono::seconds(60)))
      << client.Errors();
  EXPECT_TRUE(WaitUntil([&] { return processes.Looks() > 3; }));
  client.CloseInput();
  EXPECT_EQ(client.Wait(), 0) << client.Errors();
  processes.End();

  EXPECT_EQ(client.Output(), "connect 0\nconnect 0\nconnect -1\nconnect -1\nconnect -1\ndone\n");
  EXPECT_GT(Contents(log).size(), 1000U);
  EXPECT_FALSE(Holds(Contents(log))) << Contents(log);
  EXPECT_FALSE(Holds(client.Output())) << client.Output();
  EXPECT_FALSE(Holds(client.Errors())) << client.Errors();
  EXPECT_FALSE(Holds(broker.Log())) << broker.Log();
  EXPECT_EQ(processes.Hits(), 0);
}

}  // namespace
}  // namespace vptz_test
