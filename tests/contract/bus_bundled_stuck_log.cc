// A log that does not come back. This program's own stands in the place of the
// platform's, for the bus library too.
#include <zerklog.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "contract/bundled_bus.h"
#include "log_writer.h"
#include "support/broker.h"
#include "support/raw_mqtt.h"
#include "support/wait_until.h"
#include "trouble.h"

namespace vptz_test {
namespace {

// Keeps every line; while it is stuck, a thread that writes one waits, for 20 s at
// most.
class Log {
 public:
  void Write(const std::string& line) {
    std::unique_lock<std::mutex> lock(mutex_);
    ++waiting_;
    changed_.notify_all();
    changed_.wait_for(lock, std::chrono::seconds(20), [this] { return !stuck_; });
    --waiting_;
    lines_.push_back(line);
    changed_.notify_all();
  }
  void SetStuck(bool stuck) {
    const std::lock_guard<std::mutex> lock(mutex_);
    stuck_ = stuck;
    changed_.notify_all();
  }
  bool WaitForWriter() {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), [this] { return waiting_ > 0; });
  }
  bool WaitForLine(const std::string& part, std::size_t count = 1) {
    return WaitUntil([&] { return Count(part) >= count; });
  }
  std::size_t Count(const std::string& part) {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::size_t count = 0;
    for (const std::string& line : lines_) count += line.find(part) != std::string::npos ? 1 : 0;
    return count;
  }
  std::vector<std::string> Lines() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }
  void Clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stuck_ = false;
  int waiting_ = 0;
  std::vector<std::string> lines_;
};

Log& TheLog() {
  static Log log;
  return log;
}

class BundledLog : public BundledBus {
 protected:
  BundledLog() { TheLog().Clear(); }
  ~BundledLog() override { TheLog().SetStuck(false); }

  // Something that the service writes a line about.
  static void SendMalformed(RawMqtt& raw, int count = 1) {
    for (int i = 0; i < count; ++i) raw.Send({"dorv/call/camera/move", "", "", ""});
  }

  Broker broker_;
};

TEST_F(BundledLog, StuckWhenTheBrokerGoesHoldsUpNeitherCallsNorTheConnection) {
  const ServedName service("camera", broker_.address(), &Echo);
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  TheLog().SetStuck(true);
  broker_.Kill();
  ASSERT_TRUE(TheLog().WaitForWriter());
  std::vector<Thread> callers;
  for (int i = 0; i < 4; ++i) {
    callers.emplace_back([&] {
      EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo", "x", 1).code, -ENOTCONN); }),
                kAtOnce);
    });
  }
  callers.clear();
  broker_.Start();
  EXPECT_TRUE(WaitUntil([&] { return Call(client.get(), "camera", "echo", "y", 1).reply == "y"; }));
  TheLog().SetStuck(false);
  EXPECT_TRUE(TheLog().WaitForLine("no connection to " + broker_.address()));
  EXPECT_TRUE(TheLog().WaitForLine("connected to " + broker_.address() + " again"));
}

TEST_F(BundledLog, StuckWhileAServiceDropsRequestsHoldsUpNoOther) {
  const ServedName service("camera", broker_.address(), &Echo);
  const ClientPtr client = ConnectedTo(broker_.address());
  RawMqtt raw(broker_.socket_path(), "");
  TheLog().SetStuck(true);
  SendMalformed(raw);
  ASSERT_TRUE(TheLog().WaitForWriter());
  const Clock::time_point end = Clock::now() + std::chrono::seconds(5);
  while (Clock::now() < end) EXPECT_EQ(Call(client.get(), "camera", "echo", "x", 1).reply, "x");
  TheLog().SetStuck(false);
  EXPECT_TRUE(TheLog().WaitForLine("a malformed request was dropped"));
}

TEST_F(BundledLog, StuckLogKeepsOnlySoManyLinesAndTellsThatOthersAreMissing) {
  const ServedName service("camera", broker_.address(), &Echo);
  RawMqtt raw(broker_.socket_path(), "");
  TheLog().SetStuck(true);
  SendMalformed(raw);
  ASSERT_TRUE(TheLog().WaitForWriter());
  SendMalformed(raw, 400);
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "echo", "x").reply, "x");
  TheLog().SetStuck(false);
  EXPECT_TRUE(TheLog().WaitForLine("lines are missing here"));
  EXPECT_TRUE(TheLog().WaitForLine("a malformed request was dropped", 256));
  EXPECT_LT(TheLog().Count("a malformed request was dropped"), 401u);
}

TEST_F(BundledLog, StuckDoesNotKeepAClientFromEnding) {
  ClientPtr client = ConnectedTo(broker_.address());
  TheLog().SetStuck(true);
  broker_.Kill();
  ASSERT_TRUE(TheLog().WaitForWriter());
  EXPECT_LT(Took([&] { client.reset(); }), std::chrono::seconds(3));
  TheLog().SetStuck(false);
  EXPECT_TRUE(TheLog().WaitForLine("no connection to " + broker_.address()));
}

TEST_F(BundledLog, StuckHoldsUpNoConnectingWithBadSettings) {
  setenv("DORV_BUS_SETTINGS", "/nonexistent/settings", 1);
  const ClientPtr client(bus_client_new("contract"));
  TheLog().SetStuck(true);
  EXPECT_LT(Took([&] { EXPECT_EQ(bus_connect(client.get(), broker_.address().c_str()), -EINVAL); }),
            std::chrono::seconds(2));
  TheLog().SetStuck(false);
  EXPECT_TRUE(TheLog().WaitForLine("cannot read the bus settings /nonexistent/settings"));
  TheLog().Clear();
  EXPECT_EQ(bus_connect(client.get(), broker_.address().c_str()), -EINVAL);
  EXPECT_EQ(TheLog().Count("cannot read the bus settings /nonexistent/settings"), 1u);
  unsetenv("DORV_BUS_SETTINGS");
}

TEST_F(BundledLog, HasTheReasonWhenConnectingHasFailed) {
  const ClientPtr client(bus_client_new("contract"));
  EXPECT_EQ(bus_connect(client.get(), "unix:/nonexistent/bus.sock"), -ENOENT);
  const char reason[] = "no connection to unix:/nonexistent/bus.sock: No such file or directory";
  EXPECT_TRUE(TheLog().WaitForLine(reason));
  EXPECT_EQ(TheLog().Count(reason), 1u);
}

TEST_F(BundledLog, HasEachNewReasonAtOnceAndTheSameOneOnce) {
  const ClientPtr client = ConnectedTo(broker_.address());
  broker_.Kill();
  EXPECT_TRUE(TheLog().WaitForLine("Connection reset by peer"));
  EXPECT_TRUE(TheLog().WaitForLine("Connection refused"));
  const Clock::time_point told = Clock::now();
  // Two more attempts fail for the same reason.
  EXPECT_TRUE(WaitUntil([&] { return Clock::now() > told + milliseconds(2500); }));
  EXPECT_EQ(TheLog().Count("Connection refused"), 1u);
  broker_.Start();
  EXPECT_TRUE(TheLog().WaitForLine("connected to " + broker_.address() + " again"));
}

// ---- the parts by themselves ---------------------------------------------------

class LogParts : public testing::Test {
 protected:
  LogParts() { TheLog().Clear(); }
  ~LogParts() override { TheLog().SetStuck(false); }

  dorv::LogWriter writer_;
};

TEST_F(LogParts, MissingLinesAreToldInTheirPlace) {
  TheLog().SetStuck(true);
  DORV_LOG_LATER(writer_, ZERK_LOG_NOTICE, "line %d", 0);
  ASSERT_TRUE(TheLog().WaitForWriter());
  for (int i = 1; i < 300; ++i) DORV_LOG_LATER(writer_, ZERK_LOG_NOTICE, "line %d", i);
  TheLog().SetStuck(false);
  ASSERT_TRUE(TheLog().WaitForLine("43 lines are missing here"));
  DORV_LOG_LATER(writer_, ZERK_LOG_NOTICE, "line %d", 300);
  ASSERT_TRUE(TheLog().WaitForLine("line 300"));
  const std::vector<std::string> lines = TheLog().Lines();
  ASSERT_EQ(lines.size(), 259u);
  for (std::size_t i = 0; i < 257; ++i) EXPECT_EQ(lines[i], "line " + std::to_string(i));
  EXPECT_EQ(lines[257], "43 lines are missing here");
  EXPECT_EQ(lines[258], "line 300");
}

TEST_F(LogParts, ReasonsThatTakeTurnsAreToldOnceAMinuteEach) {
  dorv::Trouble trouble;
  const dorv::TimePoint begin = dorv::Clock::now();
  for (int second = 0; second < 120; ++second) {
    const int error = second % 2 == 0 ? -ECONNREFUSED : -ENOENT;
    trouble.Report(error, "unix:/bus", begin + std::chrono::seconds(second), writer_);
  }
  trouble.ReportEnd("unix:/bus", writer_);
  ASSERT_TRUE(TheLog().WaitForLine("connected to unix:/bus again"));
  EXPECT_EQ(TheLog().Count("no connection to unix:/bus: Connection refused"), 2u);
  EXPECT_EQ(TheLog().Count("no connection to unix:/bus: No such file or directory"), 2u);
}

TEST_F(LogParts, AReasonIsNewAgainOnceItIsOver) {
  dorv::Trouble trouble;
  const dorv::TimePoint now = dorv::Clock::now();
  trouble.ReportEnd("unix:/bus", writer_);
  for (int i = 0; i < 2; ++i) {
    trouble.Report(-ENOENT, "unix:/bus", now, writer_);
    trouble.ReportEnd("unix:/bus", writer_);
  }
  ASSERT_TRUE(TheLog().WaitForLine("connected to unix:/bus again", 2));
  EXPECT_EQ(TheLog().Lines().size(), 4u);
}

}  // namespace
}  // namespace vptz_test

extern "C" __attribute__((visibility("default"))) void ZERK_LOG_write_newline(int, int, const char*, int,
                                                                              const char*, const char* format,
                                                                              ...) {
  char text[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  vptz_test::TheLog().Write(text);
}
