// Several connections and processes at one file.
#include <vptz/model/event.h>
#include <vptz/model/event_information.h>
#include <vptz/model/preset.h>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <mutex>
#include <thread>

#include "model/model_test.h"
#include "model/statement_watch.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using vptz_test::OpenModelTest;

// The pauses that have been made between tries.
struct Pauses {
  std::vector<useconds_t> lengths;
  bool skip = false;
};
Pauses pauses;

// Counts the model's transactions, and does something at them: lets go of the
// write lock, say, which `raw` holds.
class LockingTest : public OpenModelTest {
 protected:
  LockingTest() { EXPECT_EQ(model().Connect(path), 0); }
  ~LockingTest() override {
    model().Release();
    pauses = {};
  }

  void Lock(const char* how = "BEGIN IMMEDIATE") {
    log.lines.clear();
    raw.Execute(how);
    transactions = 0;
    pauses = {};
  }
  void UnlockAt(int transaction) {
    at_transaction = [this, transaction] {
      if (transactions == transaction) raw.Execute("ROLLBACK");
    };
  }

  int transactions = 0;
  std::function<void()> at_transaction;
  vptz_test::StatementWatch watch{[this](sqlite3_stmt* statement) {
    if (sqlite3_sql(statement) != std::string("BEGIN")) return;
    ++transactions;
    if (at_transaction) at_transaction();
  }};
};

// Every operation that is tried again, each on the event with the id 1.
struct Operation {
  const char* name;
  std::function<bool()> succeeds;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

bool AddsAnEvent() {
  Event event("added", "");
  return Event::Add(&event) > 0;
}

bool UpdatesAnEvent() {
  Event event("updated", "");
  event.set_id(1);
  return Event::Update(event) == 0;
}

bool ErasesAnEvent() { return Event::Remove(1) == 0; }

bool QueriesAnEvent() {
  Event* event = nullptr;
  const bool found = Event::QueryById(&event, 1) == 0;
  delete event;
  return found;
}

bool QueriesEvents() {
  vptz_test::Rows<Event> events;
  return Event::QueryAll(&events, 0, 65535) == 0;
}

// Its reference has been read before the lock.
std::unique_ptr<EventInformation> referrer;

bool LoadsAReference() { return referrer->event() != nullptr; }

class RetryTest : public LockingTest, public testing::WithParamInterface<Operation> {
 protected:
  RetryTest() {
    Event event("first", "");
    EXPECT_EQ(Event::Add(&event), 1);
    EventInformation information(nullptr, nullptr, 0, &event);
    EXPECT_EQ(EventInformation::Add(&information), 1);
    referrer = vptz_test::ById<EventInformation>(1);
  }
  ~RetryTest() override { referrer.reset(); }

  void ExpectWaits() {
    Lock("BEGIN EXCLUSIVE");
    UnlockAt(20);
    EXPECT_TRUE(GetParam().succeeds());
    EXPECT_EQ(transactions, 20);
    EXPECT_THAT(pauses.lengths, testing::AllOf(testing::SizeIs(19), testing::Each(10000u)));
    EXPECT_THAT(log.lines, IsEmpty());
  }
};

TEST_P(RetryTest, WaitsUntilTheLockIsFree) { ExpectWaits(); }

TEST_P(RetryTest, GivesUpAfterSoManyTriesAndSaysSo) {
  Lock("BEGIN EXCLUSIVE");
  pauses.skip = true;
  EXPECT_FALSE(GetParam().succeeds());
  EXPECT_EQ(transactions, 402);
  EXPECT_THAT(pauses.lengths, testing::SizeIs(401));
  EXPECT_THAT(Lines(), ElementsAre(StartsWith(std::string("3 VptzModel::") + GetParam().name +
                                              ": Retry limit exceeded! (")));
  EXPECT_EQ(log.lines[0].file, "../src/model/vptzmodel.h");
  EXPECT_EQ(log.lines[0].function, GetParam().name);
  raw.Execute("ROLLBACK");
  EXPECT_EQ(raw.Value("SELECT name FROM event"), "'first'");
}

INSTANTIATE_TEST_SUITE_P(Operations, RetryTest,
                         testing::Values(Operation{"Add", AddsAnEvent}, Operation{"Update", UpdatesAnEvent},
                                         Operation{"Erase", ErasesAnEvent},
                                         Operation{"QueryObject", QueriesAnEvent},
                                         Operation{"QueryObjects", QueriesEvents},
                                         Operation{"LoadLazyPtr", LoadsAReference}),
                         [](const testing::TestParamInfo<Operation>& info) { return info.param.name; });

bool QueriesAnEventByName() {
  Event* event = nullptr;
  const bool found = Event::QueryByName(&event, "first") == 0;
  delete event;
  return found;
}

// Statements that their connection has prepared and run before.
class PreparedRetryTest : public RetryTest {
 protected:
  PreparedRetryTest() { EXPECT_TRUE(GetParam().succeeds()); }
};

TEST_P(PreparedRetryTest, WaitsUntilTheLockIsFree) { ExpectWaits(); }

TEST_P(PreparedRetryTest, SucceedsAgainAfterALockForWhichItGaveUp) {
  Lock("BEGIN EXCLUSIVE");
  pauses.skip = true;
  EXPECT_FALSE(GetParam().succeeds());
  EXPECT_EQ(transactions, 402);
  EXPECT_THAT(Lines(), ElementsAre(std::string("3 VptzModel::") + GetParam().name +
                                   ": Retry limit exceeded! (database operation timeout)"));
  raw.Execute("ROLLBACK");
  EXPECT_TRUE(GetParam().succeeds());
  EXPECT_EQ(transactions, 403);
}

TEST_P(PreparedRetryTest, LeavesNoLockBehind) {
  raw.Execute("BEGIN EXCLUSIVE; UPDATE event SET message = 'changed'; COMMIT");
  EXPECT_TRUE(GetParam().succeeds());
  raw.Execute("BEGIN EXCLUSIVE; ROLLBACK");
}

INSTANTIATE_TEST_SUITE_P(Queries, PreparedRetryTest,
                         testing::Values(Operation{"QueryObject", QueriesAnEvent},
                                         Operation{"QueryObject", QueriesAnEventByName},
                                         Operation{"QueryObjects", QueriesEvents}));

// Another program holds the lock, for so long by the clock. It lets go at one
// of the model's tries.
class ForeignLockTest : public LockingTest {
 protected:
  using Clock = std::chrono::steady_clock;

  ForeignLockTest() {
    holder_.Write("BEGIN IMMEDIATE;\nSELECT 'locked';\n");
    EXPECT_TRUE(vptz_test::WaitUntil([this] { return holder_.Output() == "locked\n"; }))
        << holder_.Output() << holder_.Errors();
    log.lines.clear();
    pauses = {};
    transactions = 0;
    begin_ = Clock::now();
  }

  Clock::duration Held() const { return Clock::now() - begin_; }

  // Not before so many tries, however slow the machine is.
  void HoldFor(std::chrono::seconds time, int transactions_at_least = 0) {
    at_transaction = [=] {
      if (Held() < time || transactions <= transactions_at_least || !holder_.Running()) return;
      holder_.Write("ROLLBACK;\n");
      holder_.CloseInput();
      EXPECT_EQ(holder_.Wait(), 0) << holder_.Errors();
    };
  }

 private:
  vptz_test::Process holder_{{"sqlite3", path}};
  Clock::time_point begin_;
};

TEST_F(ForeignLockTest, OfThreeSecondsIsWaitedOut) {
  HoldFor(std::chrono::seconds(3));
  EXPECT_TRUE(AddsAnEvent());
  EXPECT_GE(Held(), std::chrono::seconds(3));
  EXPECT_LT(Held(), std::chrono::seconds(20));
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "1");
}

TEST_F(ForeignLockTest, OfTenSecondsIsGivenUpAfterAboutFourAndDoesNoHarmLater) {
  HoldFor(std::chrono::seconds(10), 402);
  EXPECT_FALSE(AddsAnEvent());
  EXPECT_GE(Held(), std::chrono::milliseconds(4010));
  EXPECT_LT(Held(), std::chrono::seconds(20));
  EXPECT_EQ(transactions, 402);
  EXPECT_THAT(Lines(), ElementsAre("3 VptzModel::Add: Retry limit exceeded! (database operation timeout)"));
  int failures = 1;
  while (failures < 10 && !AddsAnEvent()) ++failures;
  EXPECT_GE(Held(), std::chrono::seconds(10));
  EXPECT_THAT(Lines(), testing::SizeIs(failures));
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "1");
}

TEST_F(LockingTest, AReadDoesNotWaitForAWriterThatHasNotCommitted) {
  Event event("first", "");
  EXPECT_EQ(Event::Add(&event), 1);
  Lock();
  EXPECT_TRUE(QueriesAnEvent());
  EXPECT_EQ(transactions, 1);
}

TEST_F(LockingTest, AddAllIsTriedOnce) {
  Lock();
  Preset presets[2];
  EXPECT_EQ(Preset::AddAll(presets, 2), -1);
  EXPECT_EQ(transactions, 1);
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 VptzModel::Add: Exception occurs! (")));
  EXPECT_EQ(log.lines[0].function, "AddAll");
}

TEST_F(LockingTest, AFailedQueryObjectsFreesWhatTheVectorHeld) {
  vptz_test::Rows<Event> events;
  events.push_back(new Event("before", ""));
  Lock("BEGIN EXCLUSIVE");
  pauses.skip = true;
  EXPECT_EQ(Event::QueryAll(&events, 0, 65535), -1);
  EXPECT_THAT(events, IsEmpty());
}

// ---- threads and processes --------------------------------------------------------------

// Adds events that no other writer adds; how many could not be.
int AddEvents(const std::string& writer, int count) {
  int failures = 0;
  for (int i = 0; i < count; ++i) {
    Event event(writer + std::to_string(i), writer);
    failures += Event::Add(&event) > 0 ? 0 : 1;
  }
  return failures;
}

TEST(ThreadsTest, WritingAndReadingAtOnceLoseAndDoubleNothing) {
  constexpr int kThreads = 4;
  constexpr int kCount = 250;
  const vptz_test::TempDir dir;
  const std::string path = dir.path() + "/vptz.db";
  ASSERT_EQ(VptzModel::Instance().Initialize(path, "vptz", ""), 0);
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&failures, i] {
      const std::string writer(1, static_cast<char>('a' + i));
      failures += AddEvents(writer, kCount);
      Event* event = nullptr;
      failures += Event::QueryByName(&event, writer + "0") == 0 ? 0 : 1;
      delete event;
    });
  }
  for (std::thread& thread : threads) thread.join();
  VptzModel::Instance().Release();
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(vptz_test::RawDatabase(path).Value("SELECT count(*), count(DISTINCT name), max(id) FROM event"),
            "1000|1000|1000");
}

pid_t StartWriter(const std::string& file, const std::string& writer, int count) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(100);
    const bool done = VptzModel::Instance().Connect(file) == 0 && AddEvents(writer, count) == 0;
    _exit(done ? 0 : 1);
  }
  return child;
}

TEST(TwoProcessesTest, WritingAtOnceLoseAndDoubleNothing) {
  constexpr int kCount = 10000;
  const vptz_test::TempDir dir;
  const std::string path = dir.path() + "/vptz.db";
  ASSERT_EQ(VptzModel::Instance().Initialize(path, "vptz", ""), 0);
  VptzModel::Instance().Release();
  const pid_t writers[] = {StartWriter(path, "a", kCount), StartWriter(path, "b", kCount)};
  for (const pid_t writer : writers) {
    int status = -1;
    EXPECT_EQ(waitpid(writer, &status, 0), writer);
    EXPECT_EQ(status, 0);
  }
  vptz_test::RawDatabase raw(path);
  EXPECT_EQ(raw.Value("SELECT count(*), count(DISTINCT name), count(DISTINCT id), max(id) FROM event"),
            "20000|20000|20000|20000");
  EXPECT_EQ(raw.Rows("SELECT message, count(*) FROM event GROUP BY message"),
            (std::vector<std::string>{"'a'|10000", "'b'|10000"}));
  EXPECT_EQ(raw.Value("SELECT (SELECT min(id) FROM event WHERE message = 'a') < (SELECT max(id) FROM event "
                      "WHERE message = 'b'), (SELECT min(id) FROM event WHERE message = 'b') < "
                      "(SELECT max(id) FROM event WHERE message = 'a')"),
            "1|1")
      << "they did not write at once";
  EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
}

}  // namespace

// Instead of the C library's, for the whole program: keeps the pauses, and
// makes them unless told to skip them.
int usleep(useconds_t microseconds) {
  {
    static std::mutex lock;
    const std::lock_guard<std::mutex> guard(lock);
    pauses.lengths.push_back(microseconds);
    if (pauses.skip) return 0;
  }
  const timespec length = {0, static_cast<long>(microseconds) * 1000};
  return nanosleep(&length, nullptr);
}
