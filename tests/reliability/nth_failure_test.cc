// The n-th write, fsync, open or allocation of a program fails: it is told an
// error or nothing at all, its database stays whole, and what it tries next
// works, in the same process and in the next.
#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <string>

#include "contract/bundled_bus.h"
#include "model/raw_database.h"
#include "reliability/nth_failure.h"
#include "reliability/reliability.h"
#include "support/broker.h"
#include "support/process.h"
#include "support/temp_dir.h"

namespace vptz_test {
namespace {

constexpr int kMost = 200;

enum Outcome { kHarmless = 0, kErrorTold = 1, kTooFew = 3 };

// GLib ends the program by itself when it gets no memory; its own words tell.
bool EndedByGlib(const RunResult& result) {
  const bool ended = result.exit_code == 128 + SIGTRAP || result.exit_code == 128 + SIGABRT;
  const bool told = result.errors.find("GLib-ERROR") != std::string::npos ||
                    result.errors.find("GLib (gthread-posix.c)") != std::string::npos;
  return ended && told;
}

// After the first twenty each tenth in the ordinary suite.
int Next(int n) { return n < 20 || Scaled(0, 1) == 1 ? n + 1 : n + 10; }

// How often what happened.
struct Figures {
  int tried = 0;
  int told = 0;
  int by_glib = 0;

  void Count(const RunResult& result) {
    ++tried;
    if (EndedByGlib(result)) {
      ++by_glib;
      return;
    }
    EXPECT_TRUE(result.exit_code == kHarmless || result.exit_code == kErrorTold)
        << result.exit_code << '\n'
        << result.output << result.errors;
    told += result.exit_code == kErrorTold ? 1 : 0;
  }
};

class OneFailure : public testing::Test {
 protected:
  OneFailure() {
    std::ofstream(folder_.path() + "/vptz.conf") << "[MQTT]\ntimeout=2\n";
    ExpectWorks("schema");
  }

  // Lets one after the other fail, as far as there are so many. How many there were.
  int FailEach(const std::string& use, const std::string& kind) {
    Figures figures;
    for (int n = 1; n <= kMost && !HasFailure(); n = Next(n)) {
      SCOPED_TRACE(testing::Message() << use << ": " << kind << " " << n);
      RemoveDatabaseOf(use);
      const RunResult result = Use(use, kind, n);
      if (result.exit_code == kTooFew) break;
      figures.Count(result);
      EXPECT_EQ(RawDatabase(Database()).Value("PRAGMA integrity_check"), "'ok'");
      if (result.exit_code > kErrorTold) ExpectWorks(use);
    }
    RecordProperty(use + "_tried", figures.tried);
    RecordProperty(use + "_told", figures.told);
    RecordProperty(use + "_ended_by_glib", figures.by_glib);
    return figures.tried;
  }

  Broker broker_;

 private:
  std::string Database() const { return folder_.path() + "/vptz.db"; }

  // So that the file is made, and its schema created, under the failure.
  void RemoveDatabaseOf(const std::string& use) const {
    if (use != "schema") return;
    for (const char* suffix : {"", "-journal"}) std::remove((Database() + suffix).c_str());
  }

  RunResult Use(const std::string& use, const std::string& kind, int n) const {
    return vptz_test::Run({VPTZ_NTH_FAILURE_CLIENT, use, kind, std::to_string(n), broker_.address()},
                          {"VPTZ_TEST_FOLDER=" + folder_.path(), "ZERK_LOG_LEVEL=error"}, "",
                          std::chrono::seconds(30));
  }

  // As a program does that comes after the one that met the failure.
  void ExpectWorks(const std::string& use) const {
    const RunResult result = Use(use, "write", 0);
    EXPECT_EQ(result.exit_code, 0) << result.output << result.errors;
  }

  TempDir folder_;
};

class OneFailureOf : public OneFailure, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    if (!kAllocationsCanFail && GetParam() == std::string("allocation"))
      GTEST_SKIP() << "not with this sanitizer";
  }
};

std::string KindOf(const testing::TestParamInfo<const char*>& info) { return info.param; }

INSTANTIATE_TEST_SUITE_P(Each, OneFailureOf, testing::Values("write", "sync", "open", "allocation"), KindOf);

TEST_P(OneFailureOf, LeavesTheDatabaseWholeAndTheNextTryWorks) {
  for (const char* use : {"configuration", "client"}) FailEach(use, GetParam());
  for (const char* use : {"schema", "rows"}) EXPECT_GT(FailEach(use, GetParam()), 0) << use;
}

// Calls write no files, so there is nothing to sync.
using OneFailureInACallOf = OneFailureOf;

INSTANTIATE_TEST_SUITE_P(Each, OneFailureInACallOf, testing::Values("write", "open", "allocation"), KindOf);

TEST_P(OneFailureInACallOf, IsToldAndTheNextOneWorks) {
  const ServedName service("vptz", broker_.address(), [](bus_service* service, bus_request* request) {
    if (std::string(bus_request_method(request)) == "refused") {
      bus_request_fail(request, -EPERM);
    } else {
      if (std::string(bus_request_method(request)) == "move") bus_service_emit(service, "moved", nullptr, 0);
      Reply(request, "");
    }
  });
  ASSERT_EQ(service.result(), 0);
  for (const char* use : {"connect", "calls"}) EXPECT_GT(FailEach(use, GetParam()), 0) << use;
}

}  // namespace
}  // namespace vptz_test
