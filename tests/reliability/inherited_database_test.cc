// A child made by fork() has a copy of the parent's open database, perhaps in the
// middle of a transaction.
#include <sys/wait.h>
#include <unistd.h>
#include <vptz/model/event.h>
#include <vptz/model/event-odb.hxx>

#include <functional>

#include "model/model_test.h"

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

}  // namespace
}  // namespace vptz_test
