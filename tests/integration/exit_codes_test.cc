// How the service ends, and what it says then.
#include <csignal>
#include <fstream>

#include "integration/integration.h"
#include "model/raw_database.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using vptz_test::Integration;
using vptz_test::Process;
using vptz_test::RawDatabase;
using vptz_test::RunResult;

constexpr char kNoBus[] = "unix:/nowhere/bus.sock";

class ExitCode : public testing::Test {
 protected:
  RunResult Run(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command = {VPTZD};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return vptz_test::Run(command, {"ZERK_LOG_LEVEL=error", "ZERK_LOG_TARGET=stderr"});
  }

  void ExpectUnusable(const std::string& database, const std::string& reason) const {
    const RunResult result = Run({"--cameras", "2", "--bus", kNoBus, "--database", database});
    EXPECT_EQ(result.exit_code, 5);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, AllOf(HasSubstr(reason), EndsWith("vptzd: cannot use the database " + database +
                                                                 "; the log tells why\n")));
  }

  const vptz_test::TempDir dir_;
  const std::string file_ = dir_.path() + "/vptz.db";
};

TEST_F(ExitCode, IsFiveForADatabaseThatCannotBeOpened) {
  ExpectUnusable("/proc/none/vptz.db", "unable to open database file");
  ExpectUnusable(dir_.path(), "unable to open database file");
}

TEST_F(ExitCode, IsFiveForAFileThatIsNoDatabaseWhichIsKept) {
  const std::string text(5000, 'x');
  std::ofstream(file_) << text;
  ExpectUnusable(file_, "not a database");
  std::ifstream stream(file_);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), text);
}

TEST_F(ExitCode, IsFiveForALockedDatabase) {
  RawDatabase raw(file_);
  raw.Execute("BEGIN EXCLUSIVE");
  ExpectUnusable(file_, "Failed to new a database instance!");
}

TEST_F(ExitCode, IsFiveWithoutTheProgramThatFillsTheDatabase) {
  const RunResult result = vptz_test::Run({VPTZD, "--cameras", "2", "--bus", kNoBus, "--database", file_},
                                          {"PATH=" + dir_.path(), "ZERK_LOG_TARGET=stderr"});
  EXPECT_EQ(result.exit_code, 5);
  EXPECT_THAT(result.errors, HasSubstr("Failed to execute SQL file from: ("));
}

TEST_F(ExitCode, IsFourForAServiceOfATakenName) {
  const vptz_test::Broker broker;
  Process first({VPTZD, "--cameras", "2", "--bus", broker.address(), "--database", file_});
  ASSERT_TRUE(vptz_test::WaitUntil([&] { return first.Output().find("serving") != std::string::npos; }));
  const RunResult result =
      Run({"--cameras", "2", "--bus", broker.address(), "--database", dir_.path() + "/second.db"});
  EXPECT_EQ(result.exit_code, 4);
  EXPECT_THAT(result.errors, HasSubstr("another service has that name"));
}

TEST_F(ExitCode, IsThreeWithoutABus) {
  const RunResult result = Run({"--bus", kNoBus, "--database", file_});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors,
              EndsWith("vptzd: cannot serve \"vptz\" on the bus at unix:/nowhere/bus.sock: No such file or "
                       "directory (-2)\n"));
}

TEST_F(ExitCode, IsTwoForAWrongCommandLine) {
  const RunResult result = Run({"--database"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.errors, HasSubstr("--database"));
  EXPECT_EQ(Run({"--cameras", "65"}).exit_code, 2);
}

TEST_F(ExitCode, IsOneForADatabaseThatTakesNoRows) {
  EXPECT_EQ(Run({"--bus", kNoBus, "--cameras", "1", "--database", file_}).exit_code, 3);
  RawDatabase(file_).Execute("CREATE TRIGGER t BEFORE INSERT ON device BEGIN SELECT RAISE(ABORT, 'no'); END");
  const RunResult result = Run({"--bus", kNoBus, "--cameras", "2", "--database", file_});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.errors, EndsWith("vptzd: the database takes no device\n"));
}

TEST_F(ExitCode, IsZeroForHelpAndVersion) {
  EXPECT_EQ(Run({"--help"}).exit_code, 0);
  EXPECT_EQ(Run({"--version"}).exit_code, 0);
}

class ExitCodeOnSignal : public Integration, public testing::WithParamInterface<int> {};

TEST_P(ExitCodeOnSignal, IsZeroWhenItIsEndedInGoodOrder) {
  StartService();
  service().Signal(GetParam());
  EXPECT_EQ(service().Wait(), 0);
  EXPECT_EQ(service().Output(), "vptzd: serving \"vptz\" with 2 cameras\n");
}

INSTANTIATE_TEST_SUITE_P(Signals, ExitCodeOnSignal, testing::Values(SIGTERM, SIGINT));

}  // namespace
