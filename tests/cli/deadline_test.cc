// --timeout bounds a command, whatever calls the library makes for it.
#include "deadline.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "cli_test.h"
#include "fake_service.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using vptz_test::BusTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::RunResult;
using vptzctl::Deadline;

// As in the program, nothing comes after it.
TEST(DeadlineTest, ExpiresWhenTheTimeIsOver) {
  const auto wait_in_vain = [] {
    Deadline deadline(milliseconds(5), [] { std::_Exit(4); });
    while (true) pause();
  };
  EXPECT_EXIT(wait_in_vain(), testing::ExitedWithCode(4), "");
}

TEST(DeadlineTest, DoesNotExpireOnceItIsMet) {
  Deadline deadline(std::chrono::seconds(5), [] { ADD_FAILURE(); });
  deadline.Pause();
  deadline.Meet();
  deadline.Resume();
}  // waits for the end of the time where that counts still

TEST(DeadlineTest, NoTimeGoesByInAPause) {
  std::atomic<bool> expired{false};
  Deadline deadline(std::chrono::hours(1), [&] { expired = true; });
  deadline.Pause();
  deadline.Resume();
  deadline.Meet();
  EXPECT_FALSE(expired);
}

// Answers nothing but the methods that a test names.
class SilentServiceTest : public BusTest {
 protected:
  ~SilentServiceTest() override {
    service.reset();  // no further request comes
    for (bus_request* request : kept) bus_request_fail(request, -ECANCELED);
  }

  void Receive(bus_request* request) {
    if (bus_request_method(request) == answered) {
      vptz_test::AnsweringStatus(0)(request);
      return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    kept.push_back(request);
  }

  // The line ends as a time-out, and in time.
  void ExpectInTime(const std::string& line) {
    const auto begin = steady_clock::now();
    const RunResult result = Ctl("--json --timeout 1 " + line);
    const auto elapsed = steady_clock::now() - begin;
    EXPECT_LT(elapsed, milliseconds(2000)) << line;
    EXPECT_GE(elapsed, milliseconds(990)) << line;
    ExpectFailure(result, 4, "ETIMEDOUT");
    EXPECT_EQ(Json::parse(result.output)["status"], -110) << line;
  }

  std::string answered;
  std::mutex mutex;
  std::vector<bus_request*> kept;
  std::optional<FakeService> service{std::in_place, broker.address(),
                                     [this](bus_request* request) { Receive(request); }};
};

TEST_F(SilentServiceTest, EveryKindOfCommandEndsInTime) {
  Sql("UPDATE device SET authorization = '{\"account\": \"a\", \"credentials\": \"b\"}'");
  for (const char* line : {"status", "ptz stop 1", "device slave 1 --slave 2", "device slave 1 --none",
                           "device slave 1 --address 192.0.2.2", "device declare 1", "nat enable 1",
                           "nat disable 1", "nat query 1", "image set 1 --contrast 1 --all", "search"}) {
    ExpectInTime(line);
  }
}

TEST_F(SilentServiceTest, WhatTheLibraryAsksAfterwardsIsBoundedToo) {
  answered = "add_device";
  ExpectInTime("device declare 1");
  answered = "enable_nat";
  ExpectInTime("nat enable 1");
}

TEST_F(SilentServiceTest, TheSlaveIsLookedUpWithoutTheService) {
  Sql("UPDATE device SET authorization = '{\"account\": \"a\", \"credentials\": \"b\"}'");
  answered = "set_slave_device";
  EXPECT_EQ(CtlJson("--timeout 1 device slave 1 --slave camera-2")["slave"], 2);
  const std::lock_guard<std::mutex> lock(mutex);
  EXPECT_TRUE(kept.empty());
}

}  // namespace
