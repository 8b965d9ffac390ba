// A client that starts where it cannot connect: each reason is told as itself,
// soon and without filling the log, and is over when its cause is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <vector>

#include "reliability/reliability.h"
#include "support/broker.h"
#include "support/canary.h"
#include "support/machine_delay.h"
#include "support/passwords.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

using std::chrono::milliseconds;

constexpr uid_t kNobody = 65534;

// A client beside a broker that it cannot use yet.
class Attempt {
 public:
  Attempt(std::string what, int error, const std::vector<std::string>& configuration = {})
      : what_(std::move(what)), error_(error), broker_(configuration) {}

  Broker& broker() { return broker_; }
  const std::string& what() const { return what_; }

  void Begin(const std::vector<std::string>& arguments = {}, const std::vector<std::string>& environment = {}) {
    std::vector<std::string> command = {VPTZ_RELIABILITY_CLIENT, "connect", broker_.address()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<std::string> settings = {"ZERK_LOG_LEVEL=warning", "ZERK_LOG_TARGET=stderr"};
    settings.insert(settings.end(), environment.begin(), environment.end());
    client_ = std::make_unique<Process>(command, settings);
  }

  void ExpectToldSoon(MachineDelay& delay) {
    const auto begin = MachineDelay::Clock::now();
    ASSERT_TRUE(WaitUntil([this] { return client_->Output().find('\n') != std::string::npos; })) << what_;
    std::istringstream line(client_->Output());
    int result = 0;
    int took = 0;
    line >> result >> took;
    EXPECT_EQ(result, error_) << what_;
    EXPECT_LE(milliseconds(took), milliseconds(1000) + delay.Between(begin, MachineDelay::Clock::now()))
        << what_;
  }
  bool Cured() const { return client_->Output().find("cured\n") != std::string::npos; }

  // Lines about the connection that is not there.
  int Complaints() const {
    std::istringstream log(client_->Errors());
    std::string line;
    int count = 0;
    while (std::getline(log, line)) count += line.find("no connection") != std::string::npos ? 1 : 0;
    return count;
  }

 private:
  const std::string what_;
  const int error_;
  Broker broker_;
  std::unique_ptr<Process> client_;
};

class Start : public testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) const {
    std::string path = folder_.path() + "/" + name;
    std::ofstream(path) << text;
    return path;
  }
  // A file in which the user "desk" has that password.
  std::string WritePassword(const std::string& password) const {
    std::string path = folder_.path() + "/passwords";
    WritePasswords(path, {{"desk", password}});
    return path;
  }

  TempDir folder_;
  MachineDelay delay_;
};

TEST_F(Start, WhereItCannotConnectIsToldOnceAndCuredByItself) {
  Attempt no_broker("no broker", -ENOENT);
  no_broker.broker().Kill();
  EXPECT_EQ(unlink(no_broker.broker().socket_path().c_str()), 0);
  no_broker.Begin();

  Attempt stale("stale socket", -ECONNREFUSED);
  stale.broker().Kill();
  stale.Begin();

  // Root is let through everywhere: there the client becomes somebody else.
  Attempt forbidden("no permission", -EPERM);
  EXPECT_EQ(chmod(forbidden.broker().folder().c_str(), 0755), 0);
  EXPECT_EQ(chmod(forbidden.broker().socket_path().c_str(), 0), 0);
  forbidden.Begin(geteuid() == 0 ? std::vector<std::string>{std::to_string(kNobody)}
                                 : std::vector<std::string>());

  const std::string settings = Write("settings", "[broker]\nuser=desk\npassword=" VPTZ_TEST_CANARY "\n");
  Attempt password("wrong password", -EKEYREJECTED,
                   {"allow_anonymous false", "password_file " + WritePassword("another-" VPTZ_TEST_CANARY)});
  password.Begin({}, {"DORV_BUS_SETTINGS=" + settings});

  Attempt rules("refusing rules", -EACCES, {"acl_file " + Write("rules", "topic read other/#\n")});
  rules.Begin();

  Attempt* const all[] = {&no_broker, &stale, &forbidden, &password, &rules};
  for (Attempt* one : all) one->ExpectToldSoon(delay_);
  const auto watched = std::chrono::seconds(Scaled(3, 130));
  const auto end = MachineDelay::Clock::now() + watched;
  EXPECT_TRUE(WaitUntil([end] { return MachineDelay::Clock::now() >= end; }, watched + milliseconds(10000)));
  for (Attempt* one : all) {
    EXPECT_FALSE(one->Cured()) << one->what();
    // Refusing rules let it connect; each call is told of them.
    EXPECT_GE(one->Complaints(), one == &rules ? 0 : 1) << one->what();
    EXPECT_LE(one->Complaints(), 1 + watched / std::chrono::minutes(1)) << one->what();
  }

  no_broker.broker().Start();
  stale.broker().Start();
  EXPECT_EQ(chmod(forbidden.broker().socket_path().c_str(), 0777), 0);
  WritePassword(kCanary);
  Write("rules", "topic readwrite #\n");
  for (Attempt* one : {&password, &rules}) {
    one->broker().Kill();
    one->broker().Start();
  }
  // Refusals are tried again each ten seconds, everything else each second.
  for (Attempt* one : all) {
    EXPECT_TRUE(WaitUntil([&] { return one->Cured(); }, std::chrono::seconds(20))) << one->what();
  }
}

}  // namespace
}  // namespace vptz_test
