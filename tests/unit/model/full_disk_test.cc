// A disk that has no room left, and has it again later.
#include <vptz/model/event.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include "model/child.h"
#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::AllOf;

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using vptz_test::ModelTest;
using vptz_test::RawDatabase;
using vptz_test::RunInChild;

void Check(int result, const char* what) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

// Ways to run out of room. Each holds for the whole process and its children.
class Disk {
 public:
  virtual ~Disk() = default;
  // Lets so many bytes be written from now on, or so many more.
  virtual void LeaveRoom(off_t bytes) = 0;
  // The reason that the log must tell.
  virtual std::string Reason() const = 0;
};

// A small file system in memory, mounted where only this process sees it.
class SmallFileSystem : public Disk {
 public:
  explicit SmallFileSystem(const std::string& folder) : ballast_(folder + "/ballast") {
    EnterOwnNamespaces();
    Check(mount("none", folder.c_str(), "tmpfs", 0, "size=4m"), "mount");
  }
  void LeaveRoom(off_t bytes) override {
    std::filesystem::remove(ballast_);
    const std::filesystem::path folder = ballast_.parent_path();
    const auto available = static_cast<off_t>(std::filesystem::space(folder).available);
    std::ofstream(ballast_) << std::string(static_cast<std::size_t>(std::max<off_t>(0, available - bytes)),
                                           'x');
  }
  std::string Reason() const override { return "full"; }

 private:
  // A user namespace lets ordinary users mount.
  static void EnterOwnNamespaces() {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    Check(unshare(CLONE_NEWUSER | CLONE_NEWNS), "unshare");
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
    std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
  }

  const std::filesystem::path ballast_;
};

// Files that may only become so long; their writes fail like those on a disk
// that is broken.
class SmallFiles : public Disk {
 public:
  explicit SmallFiles(const std::string& folder) : folder_(folder) { std::signal(SIGXFSZ, SIG_IGN); }
  void LeaveRoom(off_t bytes) override {
    rlimit limit{};
    Check(getrlimit(RLIMIT_FSIZE, &limit), "getrlimit");
    limit.rlim_cur = static_cast<rlim_t>(LongestFile() + bytes);
    Check(setrlimit(RLIMIT_FSIZE, &limit), "setrlimit");
  }
  std::string Reason() const override { return "disk I/O error"; }

 private:
  off_t LongestFile() const {
    off_t longest = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      longest = std::max(longest, static_cast<off_t>(entry.file_size()));
    }
    return longest;
  }

  const std::string folder_;
};

struct Kind {
  const char* name;
  std::unique_ptr<Disk> (*make)(const std::string& folder);
};

template <class Chosen>
std::unique_ptr<Disk> Make(const std::string& folder) {
  return std::make_unique<Chosen>(folder);
}

constexpr Kind kSmallFileSystem = {"SmallFileSystem", Make<SmallFileSystem>};
constexpr Kind kSmallFiles = {"SmallFiles", Make<SmallFiles>};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

// Whether this machine lets the test mount something.
bool MayMount(const std::string& folder) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      const SmallFileSystem probe(folder);
      _exit(0);
    } catch (const std::system_error&) {
      _exit(1);
    }
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0;
}

class FullDiskTest : public ModelTest, public testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override {
    if (GetParam().make == kSmallFileSystem.make && !MayMount(dir.path())) {
      GTEST_SKIP() << "nothing can be mounted here";
    }
  }

  // The lines of the last operation, of which one tells that there is no room.
  void ExpectFullLine(const std::string& begin, const Disk& disk) {
    EXPECT_THAT(Lines().back(), AllOf(StartsWith(begin), HasSubstr(disk.Reason()), EndsWith(")")));
  }

  std::string Integrity() { return RawDatabase(path).Value("PRAGMA integrity_check"); }
};

constexpr off_t kPlenty = 1 << 20;

int AddEvent(int number) {
  Event event("event" + std::to_string(number), std::string(3000, 'x'));
  return Event::Add(&event);
}

// Adds events until one is refused; how many were not.
int AddUntilRefused() {
  int added = 0;
  while (added < 10000 && AddEvent(added) > 0) ++added;
  return added;
}

TEST_P(FullDiskTest, RefusesARowAndKeepsThoseThatAreThere) {
  RunInChild([this] {
    const std::unique_ptr<Disk> disk = GetParam().make(dir.path());
    ASSERT_EQ(Initialize(), 0);
    disk->LeaveRoom(200000);
    log.lines.clear();
    const int added = AddUntilRefused();
    EXPECT_GT(added, 5);
    EXPECT_LT(added, 100);
    EXPECT_THAT(Lines(), testing::SizeIs(1));
    ExpectFullLine("0 VptzModel::Add: Exception occurs! (", *disk);
    EXPECT_EQ(AddEvent(added), -1) << "refused again, without harm";
    EXPECT_NE(vptz_test::ById<Event>(1), nullptr) << "reads go on";
    EXPECT_EQ(RawDatabase(path).Value("SELECT count(*) FROM event"), std::to_string(added));
    EXPECT_EQ(Integrity(), "'ok'");

    disk->LeaveRoom(kPlenty);
    log.lines.clear();
    EXPECT_EQ(AddEvent(added), added + 1);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(RawDatabase(path).Value("SELECT count(*), max(id) FROM event"),
              std::to_string(added + 1) + "|" + std::to_string(added + 1));
  });
}

TEST_P(FullDiskTest, RefusesAChangeAndKeepsTheOldRow) {
  RunInChild([this] {
    const std::unique_ptr<Disk> disk = GetParam().make(dir.path());
    ASSERT_EQ(Initialize(), 0);
    ASSERT_EQ(AddEvent(0), 1);
    Event event("event", std::string(500000, 'y'));
    event.set_id(1);
    disk->LeaveRoom(100000);
    EXPECT_EQ(Event::Update(event), -1);
    ExpectFullLine("0 VptzModel::Update: Exception occurs! (", *disk);
    EXPECT_EQ(RawDatabase(path).Value("SELECT name, length(message) FROM event"), "'event0'|3000");
    EXPECT_EQ(Integrity(), "'ok'");

    disk->LeaveRoom(2 * kPlenty);
    EXPECT_EQ(Event::Update(event), 0);
    EXPECT_EQ(RawDatabase(path).Value("SELECT name, length(message) FROM event"), "'event'|500000");
  });
}

TEST_P(FullDiskTest, FailsTheMigrationAndKeepsTheOldFile) {
  RunInChild([this] {
    const std::unique_ptr<Disk> disk = GetParam().make(dir.path());
    MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
    const std::vector<std::string> schema = RawDatabase(path).Schema();
    const std::vector<std::string> rows = OldRowsOf(path);
    disk->LeaveRoom(0);
    EXPECT_EQ(Initialize(), -1);
    ExpectFullLine("0 Failed to new a database instance! (", *disk);
    model().Release();
    EXPECT_EQ(RawDatabase(path).Schema(), schema);
    EXPECT_EQ(OldRowsOf(path), rows);
    EXPECT_EQ(Integrity(), "'ok'");

    disk->LeaveRoom(kPlenty);
    EXPECT_EQ(Initialize(), 0);
    EXPECT_EQ(model().SchemaVersion("vptz"), 10);
    EXPECT_EQ(OldRowsOf(path), rows);
  });
}

TEST_P(FullDiskTest, FailsTheCreationUntilThereIsRoom) {
  RunInChild([this] {
    const std::unique_ptr<Disk> disk = GetParam().make(dir.path());
    disk->LeaveRoom(20000);
    EXPECT_EQ(Initialize(), -1);
    ExpectFullLine("0 Failed to new a database instance! (", *disk);

    disk->LeaveRoom(kPlenty);
    EXPECT_EQ(Initialize(), 0);
    EXPECT_EQ(RawDatabase(path).Schema(), vptz_test::CreatedSchema());
  });
}

TEST_P(FullDiskTest, FailsAScriptWithTheOpenDatabaseStillUsable) {
  RunInChild([this] {
    const std::unique_ptr<Disk> disk = GetParam().make(dir.path());
    ASSERT_EQ(Initialize(), 0);
    ASSERT_EQ(AddEvent(0), 1);
    const std::string script = dir.path() + "/data.sql";
    std::ofstream(script) << "INSERT INTO setting VALUES ('big', hex(zeroblob(250000)));\n";
    disk->LeaveRoom(100000);
    EXPECT_EQ(model().ExecuteFromFile(script), -1);
    EXPECT_THAT(Lines().back(),
                StartsWith("0 Failed to execute SQL file from (" + script + ") with exit status"));
    EXPECT_EQ(Integrity(), "'ok'");

    disk->LeaveRoom(2 * kPlenty);
    EXPECT_EQ(model().ExecuteFromFile(script), 0);
    EXPECT_EQ(RawDatabase(path).Value("SELECT length(value) FROM setting"), "500000");
    EXPECT_EQ(AddEvent(1), 2);
  });
}

INSTANTIATE_TEST_SUITE_P(Of, FullDiskTest, testing::Values(kSmallFileSystem, kSmallFiles),
                         [](const testing::TestParamInfo<Kind>& info) { return info.param.name; });

}  // namespace
