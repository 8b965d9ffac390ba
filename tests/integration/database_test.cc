// What the service leaves in its database when it is killed while it writes.
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <vector>

#include "integration/integration.h"
#include "model/raw_database.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using vptz_test::Broker;
using vptz_test::Process;
using vptz_test::RawDatabase;
using vptz_test::TempDir;
using vptz_test::WaitUntil;

constexpr char kNoBus[] = "unix:/nowhere/bus.sock";

// Everything that the service writes, without the ids, which another start may
// give anew.
constexpr const char* kQueries[] = {
    "SELECT name, version FROM protocol ORDER BY name",
    "SELECT name, method FROM device_type ORDER BY name",
    "SELECT name, message FROM event ORDER BY name",
    "SELECT name, value FROM setting ORDER BY name",
    "SELECT version, migration FROM schema_version",
    "SELECT service_uri, address, mac, uuid, is_setting_applied FROM device ORDER BY service_uri",
    "SELECT d.service_uri, m.node, p.name, p.value, p.min, p.max FROM media_parameter p "
    "JOIN media m ON m.id = p.media JOIN device d ON d.id = m.device ORDER BY 1, 2, 3",
    "SELECT d.service_uri, p.node, m.id = p.pan, m.id = p.tilt, m.id = p.zoom, v.name, v.min, v.max "
    "FROM ptz p JOIN device d ON d.id = p.device JOIN movement m ON m.id IN (p.pan, p.tilt, p.zoom) "
    "JOIN movement_parameter v ON v.movement = m.id ORDER BY 1, 2, 3, 4, 5, 6",
    "SELECT d.service_uri, s.preset_id, s.name, s.pan, s.tilt, s.zoom FROM preset s "
    "JOIN ptz p ON p.id = s.ptz JOIN device d ON d.id = p.device ORDER BY 1, 2",
    "SELECT (SELECT count(*) FROM media), (SELECT count(*) FROM media_parameter), "
    "(SELECT count(*) FROM ptz), (SELECT count(*) FROM preset), (SELECT count(*) FROM movement), "
    "(SELECT count(*) FROM movement_parameter)",
};

std::vector<std::string> Contents(const std::string& file) {
  RawDatabase raw(file);
  std::vector<std::string> rows;
  for (const char* query : kQueries) {
    const std::vector<std::string> found = raw.Rows(query);
    rows.insert(rows.end(), found.begin(), found.end());
  }
  return rows;
}

std::vector<std::string> ServiceCommand(const std::string& bus, const std::string& database,
                                        const std::string& cameras = "32") {
  return {VPTZD, "--bus", bus, "--cameras", cameras, "--database", database};
}

// The service needs no bus until its rows are written.
std::vector<std::string> ContentsOfAnUndisturbedStart() {
  const TempDir dir;
  const std::string file = dir.path() + "/vptz.db";
  EXPECT_EQ(vptz_test::Run(ServiceCommand(kNoBus, file)).exit_code, 3);
  return Contents(file);
}

class KilledService : public testing::Test {
 protected:
  // What the service has started goes on after its death; it becomes ours.
  KilledService() { prctl(PR_SET_CHILD_SUBREAPER, 1); }
  ~KilledService() override { prctl(PR_SET_CHILD_SUBREAPER, 0); }

  // Kills the service when its log has come that far. Its bus keeps it from ending
  // by itself, its process group tells what it had started.
  void KillAt(const std::string& line, const std::string& bus) {
    Process service(InFrontOfTheService({"setsid"}, bus), {"ZERK_LOG_LEVEL=notice", "ZERK_LOG_TARGET=stderr"});
    const pid_t group = service.pid();
    EXPECT_TRUE(WaitUntil([&] { return service.Errors().find(line) != std::string::npos; }));
    service.Signal(SIGKILL);
    EXPECT_EQ(service.Wait(), 128 + SIGKILL);
    while (waitpid(-group, nullptr, 0) > 0) {
    }
  }

  // Starts it without a bus; the system ends it at the first byte that makes a
  // file larger than that. Its exit code.
  int RunWithFilesUpTo(std::uintmax_t size) {
    return vptz_test::Run(
               InFrontOfTheService({"prlimit", "--core=0", "--fsize=" + std::to_string(size)}, kNoBus))
        .exit_code;
  }

  std::vector<std::string> InFrontOfTheService(std::vector<std::string> command, const std::string& bus) const {
    const std::vector<std::string> service = ServiceCommand(bus, file_);
    command.insert(command.end(), service.begin(), service.end());
    return command;
  }

  void ExpectWhole() {
    if (!std::filesystem::exists(file_)) return;
    RawDatabase raw(file_);
    EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
    EXPECT_THAT(raw.Rows("PRAGMA foreign_key_check"), IsEmpty());
  }

  const TempDir dir_;
  const std::string file_ = dir_.path() + "/vptz.db";
};

// At the line of the log that contains it.
class KilledServiceAt : public KilledService, public testing::WithParamInterface<const char*> {};

TEST_P(KilledServiceAt, LeavesAWholeDatabaseThatTheNextStartCompletes) {
  static const std::vector<std::string> expected = ContentsOfAnUndisturbedStart();
  ASSERT_GT(expected.size(), 500U);
  const Broker broker;
  KillAt(GetParam(), broker.address());
  ExpectWhole();
  Process service(ServiceCommand(broker.address(), file_));
  EXPECT_TRUE(
      WaitUntil([&] { return service.Output().find("serving") != std::string::npos || !service.Running(); }));
  EXPECT_THAT(service.Output(), HasSubstr("serving")) << service.Errors();
  ExpectWhole();
  EXPECT_EQ(Contents(file_), expected);
}

INSTANTIATE_TEST_SUITE_P(Lines, KilledServiceAt,
                         testing::Values("Create database:", "Database schema version is", "remove it",
                                         "Create database schema", "Load database initial data",
                                         "home page http://192.0.2.1\n", "home page http://192.0.2.2\n",
                                         "home page http://192.0.2.4\n", "home page http://192.0.2.7\n",
                                         "home page http://192.0.2.11\n", "home page http://192.0.2.14\n",
                                         "home page http://192.0.2.18\n", "home page http://192.0.2.23\n",
                                         "home page http://192.0.2.27\n", "home page http://192.0.2.30\n"));

TEST_F(KilledService, AgainAndAgainCompletesItsDatabaseInTheEnd) {
  const std::vector<std::string> expected = ContentsOfAnUndisturbedStart();
  ASSERT_EQ(vptz_test::Run(ServiceCommand(kNoBus, file_, "1")).exit_code, 3);
  int kills = 0;
  int exit_code = 0;
  for (auto size = std::filesystem::file_size(file_); (exit_code = RunWithFilesUpTo(size)) != 3; size += 4096) {
    ASSERT_EQ(exit_code, 128 + SIGXFSZ);
    ExpectWhole();
    ASSERT_LT(++kills, 200);
  }
  EXPECT_GT(kills, 3);
  EXPECT_EQ(Contents(file_), expected);
}

}  // namespace
