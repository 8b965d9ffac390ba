#include <vptz/model/device.h>
#include <vptz/model/event.h>
#include <vptz/model/media.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "model/child.h"
#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using vptz_test::LogLine;
using vptz_test::ModelTest;
using vptz_test::RawDatabase;

using OpeningTest = ModelTest;

std::string Bytes(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void ExpectModelLines(const std::vector<LogLine>& lines, const std::string& function) {
  for (const LogLine& line : lines) {
    EXPECT_EQ(line.file, "../src/model/vptzmodel.cc") << line;
    EXPECT_EQ(line.function, function) << line;
  }
}

// ---- Connect and Release ----------------------------------------------------

TEST_F(OpeningTest, NothingIsOpenAtFirstAndAfterRelease) {
  EXPECT_FALSE(model().IsConnected());
  EXPECT_EQ(Initialize(), 0);
  EXPECT_TRUE(model().IsConnected());
  model().Release();
  EXPECT_FALSE(model().IsConnected());
  model().Release();
  EXPECT_FALSE(model().IsConnected());
}

TEST_F(OpeningTest, ConnectOpensAnExistingFileAndSaysSo) {
  EXPECT_EQ(Initialize(), 0);
  log.lines.clear();
  EXPECT_EQ(model().Connect(path), 0);
  EXPECT_TRUE(model().IsConnected());
  EXPECT_EQ(model().SchemaVersion("vptz"), 10);
  EXPECT_THAT(Lines(), ElementsAre("2 Connect database: " + path));
  ExpectModelLines(log.lines, "Connect");
}

TEST_F(OpeningTest, ConnectDoesNotCreateAMissingFile) {
  EXPECT_EQ(model().Connect(path), -1);
  EXPECT_FALSE(model().IsConnected());
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_THAT(Lines(),
              ElementsAre("2 Connect database: " + path, StartsWith("0 Failed to connect to the database! (")));
  ExpectModelLines(log.lines, "Connect");
}

TEST_F(OpeningTest, ConnectToAFolderFails) {
  EXPECT_EQ(model().Connect(dir.path()), -1);
  EXPECT_FALSE(model().IsConnected());
}

TEST_F(OpeningTest, AFailedConnectClosesWhatWasOpen) {
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(model().Connect(path + ".missing"), -1);
  EXPECT_FALSE(model().IsConnected());
}

TEST_F(OpeningTest, ConnectDoesNotMigrate) {
  MakeFile(vptz_test::OldSchema(6));
  EXPECT_EQ(model().Connect(path), 0);
  EXPECT_EQ(model().SchemaVersion("vptz"), 6);
}

TEST_F(OpeningTest, ConnectChecksReferences) {
  MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(model().Connect(path), 0);
  EXPECT_EQ(Device::Remove(3), 0);
  EXPECT_EQ(Media::QueryCountByDevice(3), 0);
}

// ---- Initialize -------------------------------------------------------------

TEST_F(OpeningTest, InitializeCreatesANewDatabaseAndTellsHowInTheLog) {
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path, "2 Database schema version is: 0",
                                   "2 Database schema is too old, remove it.",
                                   "2 Database schema does not exists. Create database schema: vptz"));
  ExpectModelLines(log.lines, "Initialize");
}

TEST_F(OpeningTest, InitializeChangesNothingInACurrentFile) {
  EXPECT_EQ(Initialize(), 0);
  model().Release();
  log.lines.clear();
  const std::string before = Bytes(path);
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path, "2 Database schema version is: 10",
                                   "2 The embedded schema version is: 10"));
  model().Release();
  EXPECT_EQ(Bytes(path), before);
}

// Only root gets through a folder without execute bits, so for others the chain
// ends at its first folder.
class MissingFoldersTest : public OpeningTest {
 protected:
  int InitializeBelow(const std::string& folder) {
    umask(022);
    const int result = model().Initialize(folder + "/b/c/vptz.db", "vptz", "");
    struct stat status {};
    EXPECT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);
    return result;
  }

  const std::string folder = dir.path() + "/a";
};

TEST_F(MissingFoldersTest, AreMadeWithTheModeAsItIs) {
  if (geteuid() != 0) GTEST_SKIP() << "an ordinary user gets no further than the other test";
  vptz_test::RunInChild([this] {
    EXPECT_EQ(InitializeBelow(folder), 0);
    EXPECT_EQ(model().SchemaVersion("vptz"), 10);
  });
}

TEST_F(MissingFoldersTest, LetNoOrdinaryUserThrough) {
  vptz_test::RunInChild([this] {
    vptz_test::BecomeOrdinaryUser(dir.path());
    EXPECT_EQ(InitializeBelow(folder), -1);
    EXPECT_THAT(Lines().back(), StartsWith("0 Failed to new a database instance! ("));
    chmod(folder.c_str(), 0755);
  });
}

TEST_F(OpeningTest, InitializeWhereNoFileCanBeFails) {
  std::ofstream(dir.path() + "/file").close();
  EXPECT_EQ(model().Initialize(dir.path() + "/file/vptz.db", "vptz", ""), -1);
  EXPECT_THAT(Lines().back(), StartsWith("0 Failed to new a database instance! ("));
  ExpectModelLines(log.lines, "Initialize");
}

TEST_F(OpeningTest, InitializeOfAnUnknownSchemaFails) {
  EXPECT_EQ(model().Initialize(path, "another", ""), -1);
  EXPECT_THAT(Lines().back(), StartsWith("0 Failed to new a database instance! ("));
}

// ---- files that are no databases, or not whole ------------------------------

TEST_F(OpeningTest, AFileThatIsNoDatabaseIsRefusedAndKept) {
  const std::string text = std::string(5000, 'x') + "precious";
  std::ofstream(path) << text;
  EXPECT_EQ(Initialize(), -1);
  EXPECT_THAT(Lines().back(), HasSubstr("not a database"));
  model().Release();
  EXPECT_EQ(Bytes(path), text);
}

TEST_F(OpeningTest, OperationsOnAFileThatIsNoDatabaseFailWithItsReason) {
  std::ofstream(path) << std::string(5000, 'x');
  EXPECT_EQ(model().Connect(path), 0) << "the file has not been read yet";
  log.lines.clear();
  Event event("name", "text");
  EXPECT_EQ(Event::Add(&event), -1);
  EXPECT_THAT(Lines(), ElementsAre(AllOf(StartsWith("0 "), HasSubstr("not a database"))));
}

TEST_F(OpeningTest, ATruncatedDatabaseGivesAnErrorAndIsNotReplaced) {
  MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
  std::filesystem::resize_file(path, std::filesystem::file_size(path) / 3);
  const std::string before = Bytes(path);
  EXPECT_EQ(Initialize(), -1);
  EXPECT_THAT(Lines().back(), StartsWith("0 Failed to new a database instance! ("));
  model().Release();
  EXPECT_EQ(Bytes(path), before);
}

TEST_F(OpeningTest, OperationsOnATruncatedDatabaseFailWithItsReasonAndChangeNothing) {
  MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
  std::filesystem::resize_file(path, std::filesystem::file_size(path) / 3);
  const std::string before = Bytes(path);
  EXPECT_EQ(model().Connect(path), 0) << "the file has not been read yet";
  log.lines.clear();
  Event event("name", "text");
  EXPECT_EQ(Event::Add(&event), -1);
  EXPECT_EQ(vptz_test::ById<Device>(3), nullptr);
  EXPECT_THAT(Lines(),
              ElementsAre(AllOf(StartsWith("0 VptzModel::Add: Exception occurs! ("), HasSubstr("malformed")),
                          AllOf(StartsWith("0 Database exception! ("), HasSubstr("malformed"))));
  model().Release();
  EXPECT_EQ(Bytes(path), before);
}

// Whatever SQLite itself takes such names for.
TEST_F(OpeningTest, APathIsTheNameOfAFileWhateverItBeginsWith) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.path());
  for (const char* name : {"file:a.db", "file:b.db?mode=memory", ":memory:"}) {
    EXPECT_EQ(model().Connect(name), -1) << name;
    EXPECT_EQ(model().Initialize(name, "vptz", ""), 0) << name;
    EXPECT_EQ(model().Connect(name), 0) << name;
    EXPECT_EQ(RawDatabase(dir.path() + "/" + name).Schema(), vptz_test::CreatedSchema());
  }
  EXPECT_EQ(model().Connect(""), -1);
  EXPECT_EQ(model().Initialize("", "vptz", ""), -1);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 3);
  std::filesystem::current_path(before);
}

TEST_F(OpeningTest, ALockedDatabaseIsNotReplaced) {
  MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
  const std::vector<std::string> before = OldRowsOf(path);
  {
    RawDatabase other(path);
    other.Execute("BEGIN EXCLUSIVE");
    EXPECT_EQ(Initialize(), -1);
    EXPECT_THAT(Lines().back(), StartsWith("0 Failed to new a database instance! ("));
  }
  model().Release();
  EXPECT_EQ(OldRowsOf(path), before);
}

// ---- files and folders that may not be written --------------------------------

TEST_F(OpeningTest, AReadOnlyFileCanBeReadButNotWritten) {
  vptz_test::RunInChild([this] {
    vptz_test::BecomeOrdinaryUser(dir.path());
    EXPECT_EQ(Initialize(), 0);
    Event event("name", "text");
    EXPECT_EQ(Event::Add(&event), 1);
    chmod(path.c_str(), 0444);
    EXPECT_EQ(model().Connect(path), 0);
    log.lines.clear();
    EXPECT_NE(vptz_test::ById<Event>(1), nullptr);
    EXPECT_EQ(Event::Remove(1), -1);
    EXPECT_THAT(Lines(), ElementsAre(AllOf(StartsWith("0 VptzModel::Erase: Exception occurs! ("),
                                           HasSubstr("readonly database"))));
    EXPECT_EQ(RawDatabase(path).Value("SELECT name FROM event"), "'name'");
  });
}

TEST_F(OpeningTest, AReadOnlyOldFileIsNotMigratedAndKept) {
  MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
  const std::string before = Bytes(path);
  chmod(path.c_str(), 0444);
  vptz_test::RunInChild([this] {
    vptz_test::BecomeOrdinaryUser(dir.path());
    EXPECT_EQ(Initialize(), -1);
    EXPECT_THAT(Lines().back(),
                AllOf(StartsWith("0 Failed to new a database instance! ("), HasSubstr("readonly database")));
  });
  EXPECT_EQ(Bytes(path), before);
}

TEST_F(OpeningTest, AReadOnlyCurrentFileIsUsedAsItIs) {
  vptz_test::RunInChild([this] {
    vptz_test::BecomeOrdinaryUser(dir.path());
    EXPECT_EQ(Initialize(), 0);
    chmod(path.c_str(), 0444);
    EXPECT_EQ(Initialize(), 0);
    EXPECT_EQ(model().SchemaVersion("vptz"), 10);
  });
}

TEST_F(OpeningTest, InitializeInAReadOnlyFolderFails) {
  vptz_test::RunInChild([this] {
    vptz_test::BecomeOrdinaryUser(dir.path());
    chmod(dir.path().c_str(), 0555);
    EXPECT_EQ(Initialize(), -1);
    EXPECT_THAT(Lines().back(), AllOf(StartsWith("0 Failed to new a database instance! ("),
                                      HasSubstr("unable to open database file")));
    EXPECT_FALSE(std::filesystem::exists(path));
  });
}

TEST_F(OpeningTest, WithoutADatabaseThereIsNoVersion) {
  model().Release();
  EXPECT_EQ(model().SchemaVersion("vptz"), -1);
}

TEST_F(OpeningTest, AFileThatIsNoDatabaseHasNoVersion) {
  std::ofstream(path) << std::string(4096, 'x');
  EXPECT_EQ(model().Connect(path), 0);
  log.lines.clear();
  EXPECT_EQ(model().SchemaVersion("vptz"), -1);
  EXPECT_THAT(Lines(), ElementsAre(AllOf(StartsWith("0 Database exception! ("), HasSubstr("not a database"))));
  ExpectModelLines(log.lines, "SchemaVersion");
}

TEST_F(OpeningTest, AnUnreadableFileIsRefusedAndKept) {
  MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
  const std::string before = Bytes(path);
  chmod(path.c_str(), 0);
  vptz_test::RunInChild([this] {
    vptz_test::BecomeOrdinaryUser(dir.path());
    chmod(path.c_str(), 0);
    EXPECT_EQ(model().Connect(path), -1);
    EXPECT_FALSE(model().IsConnected());
    EXPECT_THAT(Lines().back(), AllOf(StartsWith("0 Failed to connect to the database! ("),
                                      HasSubstr("unable to open database file")));
    EXPECT_EQ(Initialize(), -1);
  });
  chmod(path.c_str(), 0644);
  EXPECT_EQ(Bytes(path), before);
}

}  // namespace
