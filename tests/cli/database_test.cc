#include <fstream>

#include "cli_test.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::RunResult;

TEST_F(BusTest, ADatabaseIsShownWithItsCounts) {
  const Json counts = {{"version", 10}, {"cameras", 2},   {"ptz_profiles", 2}, {"media_profiles", 4},
                       {"presets", 6},  {"protocols", 6}, {"event_records", 0}};
  for (const std::string& line : {std::string("db show"), "db show " + database()}) {
    Json object = CtlJson(line);
    object.erase("command");
    object.erase("file");
    object.erase("status");
    EXPECT_EQ(object, counts) << line;
  }
  EXPECT_THAT(Ctl("db show").output, testing::ContainsRegex("cameras +2\n"));
}

TEST_F(BusTest, ADatabaseIsCreatedOnce) {
  const std::string file = broker.folder() + "/new.db";
  EXPECT_EQ(CtlJson("db create " + file)["version"], 10);
  EXPECT_EQ(CtlJson("db show " + file)["cameras"], 0);
  ExpectFailure(Ctl("--json db create " + file), 7, "file_exists");
}

TEST_F(BusTest, ANewDatabaseIsFilledByAScript) {
  const std::string script =
      Write("data.sql", "INSERT INTO protocol (name, version, reserved) VALUES ('X', '', '');");
  const std::string file = broker.folder() + "/new.db";
  EXPECT_EQ(Ctl("db create " + file + " --data " + script).exit_code, 0);
  EXPECT_EQ(CtlJson("db show " + file)["protocols"], 1);
  ExpectFailure(Ctl("--json db create " + file + "2 --data /nonexistent.sql"), 7, "unusable_database");
}

TEST_F(BusTest, WhatSqlSaysAboutAScriptIsTold) {
  const std::string script = Write("data.sql", "SELECT 1;\nINSERT INTO camera VALUES (1);\n");
  for (const std::string& line :
       {"db create " + broker.folder() + "/new.db --data ", "db migrate " + database() + " --data "}) {
    const RunResult result = Ctl("--json " + line + script);
    ExpectFailure(result, 7, "unusable_database");
    EXPECT_THAT(result.errors, HasSubstr("the script " + script +
                                         " failed: Parse error near line 2: "
                                         "no such table: camera\n"));
    EXPECT_THAT(Ctl(line + "/nonexistent.sql").errors,
                testing::AnyOf(HasSubstr("/nonexistent.sql cannot be read: No such file or directory"),
                               HasSubstr("is there already")));
  }
  EXPECT_THAT(Ctl("db migrate " + database() + " --data " + broker.folder()).errors,
              HasSubstr("is a directory"));
}

TEST_F(BusTest, AScriptsOutputIsNoneOfTheTools) {
  const std::string script = Write("data.sql", "SELECT 'noise';");
  EXPECT_THAT(Ctl("db migrate " + database() + " --data " + script).output, testing::Not(HasSubstr("noise")));
}

TEST_F(BusTest, ACurrentDatabaseIsMigratedToItself) {
  const Json object = CtlJson("db migrate " + database());
  EXPECT_EQ(object["previous_version"], 10);
  EXPECT_EQ(object["version"], 10);
  EXPECT_EQ(CtlJson("db show")["cameras"], 2);
}

TEST_F(BusTest, ADatabaseThatIsTooOldIsReplacedOnlyOnRequest) {
  Sql("UPDATE schema_version SET version = 3");
  const RunResult result = Ctl("--json db migrate " + database());
  ExpectFailure(result, 7, "worthless_version");
  EXPECT_THAT(result.errors, HasSubstr("has the version 3"));
  EXPECT_EQ(CtlJson("db show")["version"], 3);
  EXPECT_EQ(CtlJson("db migrate --replace " + database())["version"], 10);
  EXPECT_EQ(CtlJson("db show")["cameras"], 0);
}

TEST_F(BusTest, WhatIsNoDatabaseIsLeftAlone) {
  const std::string file = Write("letter", "Dear camera,\n");
  ExpectFailure(Ctl("--json db show " + file), 7, "unusable_database");
  ExpectFailure(Ctl("--json db migrate --replace " + file), 7, "unusable_database");
  ExpectFailure(Ctl("--json db create " + file), 7, "file_exists");
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  EXPECT_EQ(line, "Dear camera,");
  ExpectFailure(Ctl("--json db show /nonexistent/vptz.db"), 7, "unusable_database");
  ExpectFailure(Ctl("--json db create /proc/vptz.db"), 7, "unusable_database");
}

}  // namespace
