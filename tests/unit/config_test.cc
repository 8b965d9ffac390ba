#include <vptz/config.h>

#include <glib.h>
#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <stdexcept>
#include <type_traits>

#include "support/recording_log.h"
#include "support/temp_dir.h"

namespace {

using vptz_test::LogLine;
using vptz_test::RecordingLog;

// Counts what GLib would print because it was called wrongly.
int glib_complaints = 0;

void CountComplaint(const gchar*, GLogLevelFlags, const gchar*, gpointer) { ++glib_complaints; }

class ConfigTest : public testing::Test {
 protected:
  ConfigTest() : glib_handler_(g_log_set_default_handler(CountComplaint, nullptr)) { glib_complaints = 0; }
  ~ConfigTest() override {
    g_log_set_default_handler(glib_handler_, nullptr);
    EXPECT_EQ(glib_complaints, 0);
  }

  void Write(const std::string& text) { std::ofstream(path_) << text; }

  // Loads that text and forgets what was logged.
  void Load(const std::string& text) {
    Write(text);
    ASSERT_EQ(config_.Load(), 0);
    log_.lines.clear();
  }

  void ExpectOnlyLine(int level, const std::string& function, const std::string& message) {
    ASSERT_EQ(log_.lines.size(), 1u);
    const LogLine& line = log_.lines[0];
    EXPECT_EQ(line.module, 42);
    EXPECT_EQ(line.level, level);
    EXPECT_EQ(line.file, "../src/config.cc");
    EXPECT_GT(line.line, 0);
    EXPECT_EQ(line.function, function);
    EXPECT_EQ(line.message, message);
  }

  GLogFunc glib_handler_;
  vptz_test::TempDir folder_;
  const std::string path_ = folder_.path() + "/test.conf";
  RecordingLog log_;
  Config config_{path_.c_str()};
};

// ---- path ------------------------------------------------------------------

TEST_F(ConfigTest, ANullPathIsALogicErrorOfTheConstructor) { EXPECT_THROW(Config(nullptr), std::logic_error); }

TEST_F(ConfigTest, TheConstructorReadsNothing) {
  EXPECT_STREQ(config_.GetPath(), path_.c_str());
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, AssignPathReplacesThePathForTheNextLoad) {
  Load("[a]\nkey=old\n");
  const std::string other = folder_.path() + "/other.conf";
  std::ofstream(other) << "[a]\nkey=new\n";
  EXPECT_EQ(config_.AssignPath(other.c_str()), 0);
  EXPECT_STREQ(config_.GetPath(), other.c_str());
  std::string value;
  config_.GetValue("a", "key", value);
  EXPECT_EQ(value, "old");
  EXPECT_EQ(config_.Load(), 0);
  config_.GetValue("a", "key", value);
  EXPECT_EQ(value, "new");
}

TEST_F(ConfigTest, AssignPathWithANullPathReturnsMinusOneAndKeepsTheOldOne) {
  EXPECT_EQ(config_.AssignPath(nullptr), -1);
  EXPECT_STREQ(config_.GetPath(), path_.c_str());
}

TEST_F(ConfigTest, AssignPathTakesItsOwnPath) {
  EXPECT_EQ(config_.AssignPath(config_.GetPath()), 0);
  EXPECT_STREQ(config_.GetPath(), path_.c_str());
}

TEST_F(ConfigTest, TheDestructorIsVirtual) { EXPECT_TRUE(std::has_virtual_destructor<Config>::value); }

// ---- Load ------------------------------------------------------------------

TEST_F(ConfigTest, LoadOfAGoodFileIsLogged) {
  Write("[a]\nkey=1\n");
  EXPECT_EQ(config_.Load(), 0);
  ExpectOnlyLine(2, "Load", "Complete load config file: " + path_);
}

TEST_F(ConfigTest, LoadOfAMissingFileIsLoggedAndFails) {
  EXPECT_EQ(config_.Load(), -1);
  ExpectOnlyLine(0, "Load", "Could not load the config file: " + path_);
}

TEST_F(ConfigTest, LoadOfAFolderFails) {
  config_.AssignPath(folder_.path().c_str());
  EXPECT_EQ(config_.Load(), -1);
  ExpectOnlyLine(0, "Load", "Could not load the config file: " + folder_.path());
}

TEST_F(ConfigTest, LoadOfAnEmptyPathFails) {
  config_.AssignPath("");
  EXPECT_EQ(config_.Load(), -1);
  ExpectOnlyLine(0, "Load", "Could not load the config file: ");
}

TEST_F(ConfigTest, AnEmptyFileIsAGoodOneWithoutGroups) {
  Write("");
  EXPECT_EQ(config_.Load(), 0);
  int value = 0;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
}

TEST_F(ConfigTest, GarbageFilesFailToLoad) {
  const std::string garbage[] = {
      "no group\n",
      "key=before any group\n",
      "[unfinished\n",
      "[a]\n=no key\n",
      "[]\nkey=1\n",
      "[a]\njust words\n",
      std::string("\x7f"
                  "ELF\x02\x01\x01\0\0\0\0",
                  11),
      "\xff\xfe[a]\n",
  };
  for (const std::string& text : garbage) {
    Write(text);
    log_.lines.clear();
    EXPECT_EQ(config_.Load(), -1) << text;
    ExpectOnlyLine(0, "Load", "Could not load the config file: " + path_);
  }
}

TEST_F(ConfigTest, AfterAFailedLoadNothingIsThereNotEvenTheGoodBeginningOfTheFile) {
  Write("[MQTT]\ntimeout=9\njust words\n");
  EXPECT_EQ(config_.Load(), -1);
  int value = 0;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
}

TEST_F(ConfigTest, AFailedLoadForgetsWhatWasReadBefore) {
  Load("[MQTT]\ntimeout=9\n");
  config_.AssignPath("/nonexistent/vptz.conf");
  EXPECT_EQ(config_.Load(), -1);
  int value = 0;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
}

// That the first one is freed is what the address sanitizer watches.
TEST_F(ConfigTest, TwoLoadsInARowLeaveExactlyTheSecond) {
  Load("[a]\nfirst=1\n");
  Load("[a]\nsecond=2\n");
  std::string value;
  EXPECT_EQ(config_.GetValue("a", "first", value), -1);
  EXPECT_EQ(config_.GetValue("a", "second", value), 0);
}

TEST_F(ConfigTest, LoadWorksAgainAfterAFailure) {
  EXPECT_EQ(config_.Load(), -1);
  Load("[MQTT]\ntimeout=9\n");
  int value = 0;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), 0);
  EXPECT_EQ(value, 9);
}

TEST_F(ConfigTest, ReleaseForgetsWhatWasReadAndMayBeCalledAgain) {
  Load("[MQTT]\ntimeout=9\n");
  config_.Release();
  config_.Release();
  int value = 0;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
}

// ---- texts -----------------------------------------------------------------

TEST_F(ConfigTest, ATextIsCopiedRaw) {
  Load("[a]\nkey = two words \\n\\s;and more  \nempty=\n");
  std::string value = "old";
  EXPECT_EQ(config_.GetValue("a", "key", value), 0);
  EXPECT_EQ(value, "two words \\n\\s;and more  ");
  EXPECT_EQ(config_.GetValue("a", "empty", value), 0);
  EXPECT_EQ(value, "");
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, OfAKeyThatIsThereTwiceTheLastCounts) {
  Load("[a]\nkey=1\nkey=2\n[b]\nkey=9\n[a]\nkey=3\n");
  std::string value;
  EXPECT_EQ(config_.GetValue("a", "key", value), 0);
  EXPECT_EQ(value, "3");
}

TEST_F(ConfigTest, AMissingKeyIsLoggedAndLeavesTheTextAlone) {
  Load("[a]\nkey=1\n");
  std::string value = "old";
  EXPECT_EQ(config_.GetValue("a", "other", value), -1);
  EXPECT_EQ(value, "old");
  ExpectOnlyLine(1, "GetValue", "Failed to get config value a/other: Key not found!");
}

TEST_F(ConfigTest, AMissingGroupIsLoggedAndLeavesTheTextAlone) {
  Load("[a]\nkey=1\n");
  std::string value = "old";
  EXPECT_EQ(config_.GetValue("b", "key", value), -1);
  EXPECT_EQ(value, "old");
  ExpectOnlyLine(1, "GetValue", "Failed to get config value b/key: Group not found!");
}

TEST_F(ConfigTest, BeforeLoadThereAreNoGroups) {
  std::string value = "old";
  EXPECT_EQ(config_.GetValue("a", "key", value), -1);
  EXPECT_EQ(value, "old");
  ExpectOnlyLine(1, "GetValue", "Failed to get config value a/key: Group not found!");
}

TEST_F(ConfigTest, ANullGroupOrKeyIsAnErrorAndLeavesTheTextAlone) {
  Load("[a]\nkey=1\n");
  std::string value = "old";
  EXPECT_EQ(config_.GetValue(nullptr, "key", value), -1);
  ExpectOnlyLine(0, "GetValue", "Failed to get config value: Unkown error!");
  log_.lines.clear();
  EXPECT_EQ(config_.GetValue("a", nullptr, value), -1);
  ExpectOnlyLine(0, "GetValue", "Failed to get config value: Unkown error!");
  EXPECT_EQ(value, "old");
}

TEST_F(ConfigTest, WithADefaultATextIsAlwaysStoredAndNothingLogged) {
  Load("[a]\nkey=1\nempty=\n");
  std::string value = "old";
  EXPECT_EQ(config_.GetValue("a", "key", "default", value), 0);
  EXPECT_EQ(value, "1");
  EXPECT_EQ(config_.GetValue("a", "empty", "default", value), 0);
  EXPECT_EQ(value, "");
  EXPECT_EQ(config_.GetValue("a", "other", "default", value), 0);
  EXPECT_EQ(value, "default");
  EXPECT_EQ(config_.GetValue("b", "key", "another", value), 0);
  EXPECT_EQ(value, "another");
  EXPECT_EQ(config_.GetValue(nullptr, nullptr, "default", value), 0);
  EXPECT_EQ(value, "default");
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, ANullDefaultTextCountsAsEmpty) {
  std::string value = "old";
  EXPECT_EQ(config_.GetValue("a", "key", static_cast<const char*>(nullptr), value), 0);
  EXPECT_EQ(value, "");
}

TEST_F(ConfigTest, BytesThatAreNotUtf8AreCopiedAsTheyAre) {
  Load("[a]\nkey=caf\xe9\n");
  std::string value;
  EXPECT_EQ(config_.GetValue("a", "key", value), 0);
  EXPECT_EQ(value, "caf\xe9");
}

// ---- integers --------------------------------------------------------------

TEST_F(ConfigTest, AnIntegerOtherThanZeroIsStored) {
  Load("[a]\none=1\nnegative=-7\nlargest=2147483647\nsmallest=-2147483648\n");
  int value = 99;
  EXPECT_EQ(config_.GetValue("a", "one", 2, value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(config_.GetValue("a", "negative", 2, value), 0);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(config_.GetValue("a", "largest", 2, value), 0);
  EXPECT_EQ(value, INT_MAX);
  EXPECT_EQ(config_.GetValue("a", "smallest", 2, value), 0);
  EXPECT_EQ(value, INT_MIN);
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, AFileWithoutTheGroupGivesTheDefaultIntegerAndLogsNothing) {
  Load("[VPTZ]\nndi_preset_shift=1\n");
  int value = 99;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, AMissingKeyGivesTheDefaultIntegerAndLogsNothing) {
  Load("[MQTT]\nother=1\n");
  int value = 99;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, AnIntegerOfZeroCountsAsMissing) {
  Load("[MQTT]\ntimeout=0\nsigned=-0\nlong=000\n");
  for (const char* key : {"timeout", "signed", "long"}) {
    int value = 99;
    EXPECT_EQ(config_.GetValue("MQTT", key, 2, value), -1) << key;
    EXPECT_EQ(value, 2) << key;
  }
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(ConfigTest, AValueThatIsNoIntegerIsLoggedAndLeavesTheNumberAlone) {
  Load("[MQTT]\na=abc\nb=\nc=3x\nd=2.5\ne=2147483648\nf=0x10\ng=99999999999999999999\n");
  for (const char* key : {"a", "b", "c", "d", "e", "f", "g"}) {
    int value = 99;
    log_.lines.clear();
    EXPECT_EQ(config_.GetValue("MQTT", key, 2, value), -1) << key;
    EXPECT_EQ(value, 99) << key;
    ExpectOnlyLine(0, "GetValue", "Failed to get config value: Unkown error!");
  }
}

TEST_F(ConfigTest, ANullGroupOrKeyIsAnErrorAndLeavesTheNumberAlone) {
  Load("[MQTT]\ntimeout=5\n");
  int value = 99;
  EXPECT_EQ(config_.GetValue(nullptr, "timeout", 2, value), -1);
  EXPECT_EQ(config_.GetValue("MQTT", nullptr, 2, value), -1);
  EXPECT_EQ(value, 99);
  EXPECT_EQ(log_.lines.size(), 2u);
}

TEST_F(ConfigTest, BeforeLoadAnIntegerIsTheDefault) {
  int value = 99;
  EXPECT_EQ(config_.GetValue("MQTT", "timeout", 2, value), -1);
  EXPECT_EQ(value, 2);
  EXPECT_TRUE(log_.lines.empty());
}

}  // namespace
