#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using vptz_test::ModelTest;
using vptz_test::RawDatabase;

constexpr char kOneSetting[] = "INSERT INTO setting VALUES ('key', 'value');\n";

// Another search path, and another working folder, while it lives.
class Surroundings {
 public:
  explicit Surroundings(const std::string& folder, const std::string& search_path = getenv("PATH"))
      : folder_(std::filesystem::current_path()), search_path_(getenv("PATH")) {
    std::filesystem::current_path(folder);
    setenv("PATH", search_path.c_str(), 1);
  }
  ~Surroundings() {
    std::filesystem::current_path(folder_);
    setenv("PATH", search_path_.c_str(), 1);
  }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

 private:
  const std::filesystem::path folder_;
  const std::string search_path_;
};

class ScriptTest : public ModelTest {
 protected:
  std::string Script(const std::string& text, const std::string& name = "data.sql") {
    std::string file = dir.path() + "/" + name;
    std::ofstream(file) << text;
    return file;
  }

  // A program called sqlite3 that comes instead of the real one.
  void MakeSqlite3(const std::string& commands) {
    const std::string program = dir.path() + "/sqlite3";
    std::ofstream(program) << "#!/bin/sh\n" << commands;
    chmod(program.c_str(), 0755);
  }

  int Settings(const std::string& file) {
    return std::stoi(RawDatabase(file).Value("SELECT count(*) FROM setting"));
  }
};

TEST_F(ScriptTest, RunsAgainstTheOpenFile) {
  EXPECT_EQ(Initialize(), 0);
  log.lines.clear();
  EXPECT_EQ(model().ExecuteFromFile(Script(kOneSetting)), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT * FROM setting"), "'key'|'value'");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ScriptTest, ThatFailsIsLoggedWithItsWaitStatus) {
  EXPECT_EQ(Initialize(), 0);
  log.lines.clear();
  const std::string script = Script("INSERT INTO nowhere VALUES (1);\n");
  EXPECT_EQ(model().ExecuteFromFile(script), -1);
  EXPECT_THAT(Lines(),
              ElementsAre("0 Failed to execute SQL file from (" + script + ") with exit status (256)"));
  EXPECT_EQ(log.lines[0].function, "ExecuteFromFile");
  EXPECT_EQ(log.lines[0].file, "../src/model/vptzmodel.cc");
}

TEST_F(ScriptTest, ThatIsMissingFails) {
  EXPECT_EQ(Initialize(), 0);
  log.lines.clear();
  EXPECT_EQ(model().ExecuteFromFile(dir.path() + "/missing.sql"), -1);
  EXPECT_THAT(Lines(),
              ElementsAre(StartsWith("0 Failed to execute SQL file from (" + dir.path() + "/missing.sql)")));
}

TEST_F(ScriptTest, WithoutTheSqlite3ProgramFails) {
  EXPECT_EQ(Initialize(), 0);
  log.lines.clear();
  const std::string script = Script(kOneSetting);
  const Surroundings nothing_to_find(dir.path(), dir.path());
  EXPECT_EQ(model().ExecuteFromFile(script), -1);
  EXPECT_THAT(Lines(), ElementsAre("0 Failed to execute SQL file from: (" + script + ")"));
  EXPECT_EQ(Settings(path), 0);
}

TEST_F(ScriptTest, OfInitialDataWithoutTheSqlite3ProgramFailsAndKeepsEveryRow) {
  MakeFile(vptz_test::OldSchema(9) + vptz_test::OldRows());
  const std::vector<std::string> before = OldRowsOf(path);
  const std::string script = Script(kOneSetting);
  const Surroundings nothing_to_find(dir.path(), dir.path());
  EXPECT_EQ(model().Initialize(path, "vptz", script), -1);
  EXPECT_TRUE(model().IsConnected());
  EXPECT_EQ(model().SchemaVersion("vptz"), 10);
  EXPECT_EQ(Lines().back(), "0 Failed to load the initial data from " + script);
  EXPECT_EQ(OldRowsOf(path), before);
}

TEST_F(ScriptTest, WithAnEmptySearchPathFails) {
  EXPECT_EQ(Initialize(), 0);
  const std::string script = Script(kOneSetting);
  const Surroundings nothing_to_find(dir.path(), "");
  EXPECT_EQ(model().ExecuteFromFile(script), -1);
  EXPECT_EQ(Settings(path), 0);
}

TEST_F(ScriptTest, WithoutAnOpenDatabaseFails) {
  EXPECT_EQ(model().ExecuteFromFile(Script(kOneSetting)), -1);
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 Failed to execute SQL file from: (")));
}

TEST_F(ScriptTest, IsHandedToTheProgramAsOneReadCommand) {
  EXPECT_EQ(Initialize(), 0);
  MakeSqlite3("printf '%s\\n' \"$@\" > " + dir.path() + "/arguments\n");
  const Surroundings fake(dir.path(), dir.path() + ":" + getenv("PATH"));
  EXPECT_EQ(model().ExecuteFromFile("/tmp/data.sql"), 0);
  std::ifstream arguments(dir.path() + "/arguments");
  std::vector<std::string> lines;
  for (std::string line; std::getline(arguments, line);) lines.push_back(line);
  EXPECT_THAT(lines, ElementsAre(path, ".read /tmp/data.sql"));
}

TEST_F(ScriptTest, PrintsNothingThroughTheLibrary) {
  EXPECT_EQ(Initialize(), 0);
  const std::string script = Script("SELECT 'to standard output';\nSELECT nonsense;\n");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(model().ExecuteFromFile(script), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ScriptTest, WhoseProgramIsKilledFails) {
  EXPECT_EQ(Initialize(), 0);
  MakeSqlite3("kill -9 $$\n");
  const Surroundings fake(dir.path(), dir.path() + ":" + getenv("PATH"));
  log.lines.clear();
  EXPECT_EQ(model().ExecuteFromFile("data.sql"), -1);
  EXPECT_THAT(Lines(), ElementsAre("0 Failed to execute SQL file from (data.sql) with exit status (9)"));
}

// ---- odd names --------------------------------------------------------------

// Relative names, so that what they begin with counts. One that gets to a shell
// leaves a file called "pwned".
class OddNameTest : public ScriptTest, public testing::WithParamInterface<const char*> {};

TEST_P(OddNameTest, OfAScriptIsJustAName) {
  EXPECT_EQ(Initialize(), 0);
  Script(kOneSetting, GetParam());
  const Surroundings here(dir.path());
  EXPECT_EQ(model().ExecuteFromFile(GetParam()), 0);
  EXPECT_EQ(Settings(path), 1);
  EXPECT_FALSE(std::filesystem::exists("pwned"));
}

TEST_P(OddNameTest, OfADatabaseIsJustAName) {
  const std::string script = Script(kOneSetting);
  const Surroundings here(dir.path());
  EXPECT_EQ(model().Initialize(GetParam(), "vptz", script), 0);
  EXPECT_EQ(Settings(dir.path() + "/" + GetParam()), 1);
  EXPECT_FALSE(std::filesystem::exists("pwned"));
}

INSTANTIATE_TEST_SUITE_P(Names, OddNameTest,
                         testing::Values("with space", "two  spaces ", "single'quote", "double\"quote",
                                         "';touch pwned;'", "\";touch pwned;\"", "semi;colon;",
                                         "$(touch pwned)", "`touch pwned`", "|touch pwned", "|", "back\\slash",
                                         "back\\\\slashes\\", "new\nline", "-init", "-", "#hash", "&amp", "*",
                                         "?", "~", "~root", "%s%n", "\xc3\xa4\xe2\x82\xac", "a\tb", "'", "\"",
                                         ".read", "x'||'y", "file:name", "file:name?mode=ro",
                                         "file:", ":memory:", ":"));

// ---- the initial data -------------------------------------------------------

TEST_F(ScriptTest, OfInitialDataRunsEveryTime) {
  const std::string script = Script(
      "INSERT OR REPLACE INTO setting VALUES ('runs', "
      "ifnull((SELECT value + 1 FROM setting WHERE name = 'runs'), 1));\n");
  EXPECT_EQ(model().Initialize(path, "vptz", script), 0);
  EXPECT_EQ(Lines().back(), "2 Load database initial data from: " + script);
  EXPECT_EQ(model().Initialize(path, "vptz", script), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT value FROM setting"), "'2'");
}

TEST_F(ScriptTest, OfInitialDataThatFailsFailsInitializeWhichStaysConnected) {
  const std::string script = Script("nonsense;\n");
  EXPECT_EQ(model().Initialize(path, "vptz", script), -1);
  EXPECT_TRUE(model().IsConnected());
  EXPECT_EQ(model().SchemaVersion("vptz"), 10);
  const std::vector<std::string> lines = Lines();
  ASSERT_GE(lines.size(), 3u);
  EXPECT_THAT(std::vector<std::string>(lines.end() - 3, lines.end()),
              ElementsAre("2 Load database initial data from: " + script,
                          "0 Failed to execute SQL file from (" + script + ") with exit status (256)",
                          "0 Failed to load the initial data from " + script));
}

TEST_F(ScriptTest, IsNotRunWithoutAName) {
  MakeSqlite3("touch " + dir.path() + "/was-run\n");
  const Surroundings fake(dir.path(), dir.path() + ":" + getenv("PATH"));
  EXPECT_EQ(Initialize(), 0);
  EXPECT_FALSE(std::filesystem::exists(dir.path() + "/was-run"));
}

}  // namespace
