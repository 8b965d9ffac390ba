// What a process leaves that is killed while it creates or migrates a database.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::AnyOf;
using testing::ElementsAreArray;
using vptz_test::ModelTest;
using vptz_test::RawDatabase;

// Kills this process when it has counted down; 0 never does.
int countdown = 0;

bool IsTheLast() { return countdown > 0 && --countdown == 0; }

[[noreturn]] void Die() {
  raise(SIGKILL);
  abort();
}

// ---- at a statement ---------------------------------------------------------

int OnStatement(unsigned, void*, void*, void*) {
  if (IsTheLast()) Die();
  return 0;
}

int TraceNewConnection(sqlite3* connection, char**, const void*) {
  return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, OnStatement, nullptr);
}

void DieAtStatement(int number) {
  countdown = number;
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(TraceNewConnection));
}

// ---- at a change of a file --------------------------------------------------

// Half of what was to be written gets there, as when the machine stops.
template <class Write>
ssize_t WriteOrDie(std::size_t size, const Write& write) {
  if (IsTheLast()) {
    write(size / 2);
    Die();
  }
  return write(size);
}

ssize_t DyingWrite(int file, const void* bytes, size_t size) {
  return WriteOrDie(size, [&](std::size_t part) { return write(file, bytes, part); });
}

ssize_t DyingPwrite(int file, const void* bytes, size_t size, off64_t offset) {
  return WriteOrDie(size, [&](std::size_t part) { return pwrite64(file, bytes, part, offset); });
}

int DyingTruncate(int file, off64_t size) {
  if (IsTheLast()) Die();
  return ftruncate64(file, size);
}

int DyingUnlink(const char* path) {
  if (IsTheLast()) Die();
  return unlink(path);
}

template <class Function>
void Replace(const char* name, Function function) {
  sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
  if (files->xGetSystemCall(files, name) != nullptr) {
    files->xSetSystemCall(files, name, reinterpret_cast<sqlite3_syscall_ptr>(function));
  }
}

void DieAtFileChange(int number) {
  countdown = number;
  Replace("write", DyingWrite);
  Replace("pwrite", DyingPwrite);
  Replace("pwrite64", DyingPwrite);
  Replace("ftruncate", DyingTruncate);
  Replace("unlink", DyingUnlink);
}

// ---- the tests --------------------------------------------------------------

using Arm = void (*)(int number);

struct Moment {
  const char* name;
  Arm arm;
};

void PrintTo(const Moment& moment, std::ostream* out) { *out << moment.name; }

class CrashTest : public ModelTest, public testing::WithParamInterface<Moment> {
 protected:
  // Initialize in a process of its own; whether that was killed.
  bool IsKilled(int number) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(30);
      GetParam().arm(number);
      _exit(Initialize() == 0 ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    const bool killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    EXPECT_TRUE(killed || status == 0) << "wait status " << status;
    return killed;
  }

  void StartAgain() {
    model().Release();
    for (const char* suffix : {"", "-journal"}) {
      std::filesystem::remove(path + suffix);
    }
  }

  std::string State() {
    RawDatabase raw(path);
    EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
    return raw.Schema().empty() ? "empty" : raw.Value("SELECT version || ',' || migration FROM schema_version");
  }
};

// A process that dies is not a process that fails: the file must be whole, in
// its old version or the new one, and the next start must bring it up.
class MigrationCrashTest : public CrashTest {
 protected:
  void ExpectWhole(const std::vector<std::string>& old_schema, const std::vector<std::string>& old_rows) {
    const std::string state = State();
    EXPECT_THAT(state, AnyOf("'6,0'", "'10,0'"));
    EXPECT_THAT(RawDatabase(path).Schema(),
                ElementsAreArray(state == "'6,0'" ? old_schema : vptz_test::MigratedSchema()));
    EXPECT_EQ(OldRowsOf(path), old_rows);
  }
};

TEST_P(MigrationCrashTest, LeavesTheOldVersionOrTheNewOneWhole) {
  int kills = 0;
  for (bool killed = true; killed && !HasFailure(); ++kills) {
    SCOPED_TRACE("killed at " + std::to_string(kills + 1));
    StartAgain();
    MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
    const std::vector<std::string> schema = RawDatabase(path).Schema();
    const std::vector<std::string> rows = OldRowsOf(path);
    killed = IsKilled(kills + 1);
    ExpectWhole(schema, rows);
    EXPECT_EQ(Initialize(), 0);
    EXPECT_EQ(State(), "'10,0'");
    EXPECT_EQ(OldRowsOf(path), rows);
  }
  RecordProperty("kills", kills - 1);
  EXPECT_GT(kills, 10);
}

TEST_P(CrashTest, WhileCreatingLeavesNothingOrAWholeDatabase) {
  int kills = 0;
  for (bool killed = true; killed && !HasFailure(); ++kills) {
    SCOPED_TRACE("killed at " + std::to_string(kills + 1));
    StartAgain();
    killed = IsKilled(kills + 1);
    EXPECT_THAT(State(), AnyOf("empty", "'10,0'"));
    EXPECT_EQ(Initialize(), 0);
    EXPECT_EQ(State(), "'10,0'");
    EXPECT_THAT(RawDatabase(path).Schema(), ElementsAreArray(vptz_test::CreatedSchema()));
  }
  RecordProperty("kills", kills - 1);
  EXPECT_GT(kills, 10);
}

constexpr Moment kMoments[] = {{"AtAStatement", DieAtStatement}, {"AtAFileChange", DieAtFileChange}};

std::string MomentName(const testing::TestParamInfo<Moment>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Killed, CrashTest, testing::ValuesIn(kMoments), MomentName);
INSTANTIATE_TEST_SUITE_P(Killed, MigrationCrashTest, testing::ValuesIn(kMoments), MomentName);

}  // namespace
