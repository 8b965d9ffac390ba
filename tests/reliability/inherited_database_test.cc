// A child made by fork() has a copy of the parent's open database, perhaps in the
// middle of a transaction.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vptz/model/event.h>
#include <vptz/model/event-odb.hxx>

#include <functional>

#include <thread>

#include "model/model_test.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

// What runs in the middle of a transaction: SQLite calls it for each row that is
// written.
std::function<void()> in_transaction;

int Install(sqlite3* connection, char**, const void*) {
  sqlite3_update_hook(
      connection, [](void*, int, const char*, const char*, sqlite3_int64) { in_transaction(); }, nullptr);
  return 0;
}

class InheritedDatabase : public OpenModelTest {
 protected:
  InheritedDatabase() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(Install));
    EXPECT_EQ(model().Connect(path), 0);
  }
  ~InheritedDatabase() override { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Install)); }

  // Runs the body in a child. What fails there fails the test.
  template <class Body>
  static void InChild(Body body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      body();
      std::fflush(nullptr);
      _exit(HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the child's wait status";
  }
};

TEST_F(InheritedDatabase, IsNotRolledBackByAChildThatReleasesIt) {
  int status = -1;
  in_transaction = [&] {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      VptzModel::Instance().Release();
      _exit(0);
    }
    EXPECT_EQ(waitpid(child, &status, 0), child);
  };
  Event event("kept", "whole");
  EXPECT_EQ(Event::Add(&event), 1);
  in_transaction = [] {};
  EXPECT_EQ(status, 0);
  EXPECT_EQ(raw.Value("SELECT name FROM event"), "'kept'");
  EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
}

TEST_F(InheritedDatabase, DoesNotKeepTheChildFromOpeningItsOwn) {
  in_transaction = [] {};
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    Event event("the child's", "");
    const bool added = VptzModel::Instance().Connect(path) == 0 && Event::Add(&event) == 1;
    VptzModel::Instance().Release();
    _exit(added ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  Event event("the parent's", "");
  EXPECT_EQ(Event::Add(&event), 2);
}

TEST_F(InheritedDatabase, IsUsedByNoOperationOfTheChild) {
  in_transaction = [] {};
  Event stored("the parent's", "");
  EXPECT_EQ(Event::Add(&stored), 1);
  InChild([&] {
    log.lines.clear();
    EXPECT_FALSE(model().IsConnected());
    EXPECT_EQ(model().SchemaVersion("vptz"), -1);
    EXPECT_EQ(Event::Add(&stored), -1);
    EXPECT_EQ(Event::Update(stored), -1);
    EXPECT_EQ(Event::Remove(1), -1);
    EXPECT_EQ(ById<Event>(1), nullptr);
    Rows<Event> rows;
    EXPECT_EQ(Event::QueryAll(&rows, 0, 65535), -1);
    EXPECT_THAT(Lines(), testing::ElementsAre("0 VptzModel::Add: Exception occurs! (no open database)",
                                              "0 VptzModel::Update: Exception occurs! (no open database)",
                                              "0 VptzModel::Erase: Exception occurs! (no open database)",
                                              "0 Database exception! (no open database)",
                                              "0 Database exception! (no open database)"));
    EXPECT_EQ(model().ExecuteFromFile("/dev/null"), -1);
    EXPECT_EQ(model().Connect(path), 0);
    EXPECT_NE(ById<Event>(1), nullptr);
  });
  EXPECT_TRUE(model().IsConnected());
  EXPECT_NE(ById<Event>(1), nullptr);
}

// Another thread of the parent opens a database: the sqlite3 program, which it
// waits for, reads the script from a pipe that nothing is written to.
TEST_F(InheritedDatabase, DoesNotMakeTheChildWaitForAThreadThatItLacks) {
  const std::string script = dir.path() + "/script.sql";
  ASSERT_EQ(mkfifo(script.c_str(), 0600), 0);
  std::thread opening([&] { EXPECT_EQ(model().Initialize(path, "vptz", script), 0); });
  int pipe = -1;
  EXPECT_TRUE(WaitUntil([&] { return (pipe = open(script.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) >= 0; }));
  InChild([this] {
    model().Release();
    EXPECT_EQ(model().Connect(path), 0);
    model().Release();
  });
  close(pipe);
  opening.join();
  EXPECT_TRUE(model().IsConnected());
}

}  // namespace
}  // namespace vptz_test
