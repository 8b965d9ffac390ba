// The checks of references are off while Initialize changes the schema. When they
// can't be switched on again, nothing may use that connection.
#include <sqlite3.h>
#include <vptz/model/preset.h>
#include <vptz/model/ptz.h>

#include "model/model_test.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using vptz_test::ModelTest;

// What becomes of the statement that switches the checks on after it has been
// switched off: SQLite refuses it, or ignores it as it does where a transaction is
// open.
int verdict = SQLITE_OK;
bool is_off = false;

int Judge(void*, int action, const char* pragma, const char* value, const char*, const char*) {
  if (action != SQLITE_PRAGMA || std::string(pragma) != "foreign_keys" || value == nullptr) return SQLITE_OK;
  const bool on_again = is_off && std::string(value) == "ON";
  is_off = std::string(value) == "OFF";
  return on_again ? verdict : SQLITE_OK;
}

int Install(sqlite3* connection, char**, const void*) {
  return sqlite3_set_authorizer(connection, Judge, nullptr);
}

class SchemaChecksTest : public ModelTest {
 protected:
  SchemaChecksTest() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(Install)); }
  ~SchemaChecksTest() override {
    verdict = SQLITE_OK;
    sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Install));
  }

  // Initialize fails for that reason, and what it leaves open checks references.
  void ExpectFailure(const std::string& reason) {
    EXPECT_EQ(Initialize(), -1);
    EXPECT_THAT(Lines().back(), AllOf(StartsWith("0 Failed to new a database instance! ("), HasSubstr(reason)));
    EXPECT_TRUE(model().IsConnected());
    EXPECT_EQ(AddPresetOfNoNode(), -1);
    EXPECT_THAT(Lines().back(), HasSubstr("FOREIGN KEY constraint failed"));
    verdict = SQLITE_OK;
    EXPECT_EQ(Initialize(), 0);
  }

 private:
  static int AddPresetOfNoNode() {
    Ptz nowhere;
    nowhere.set_id(99);
    Preset preset(&nowhere, 1, "", "", 0, 0, 0);
    return Preset::Add(&preset);
  }
};

TEST_F(SchemaChecksTest, ThatCannotBeSwitchedOnAgainFailInitialize) {
  verdict = SQLITE_DENY;
  ExpectFailure("not authorized");
}

TEST_F(SchemaChecksTest, ThatStayOffFailInitialize) {
  verdict = SQLITE_IGNORE;
  ExpectFailure("the checks of references cannot be switched on again");
}

}  // namespace
