#include <vptz/model/setting.h>

#include <stdexcept>
#include <utility>

#include "model/model_test.h"

namespace {

using testing::ElementsAre;
using vptz_test::OpenModelTest;

class SettingTest : public OpenModelTest {
 protected:
  void Store(const std::string& value) {
    Setting setting("key", value);
    EXPECT_EQ(VptzModel::Add(&setting), 0);
  }
};

TEST_F(SettingTest, IsFoundByName) {
  Store("text");
  Setting* setting = new Setting("before", "");
  EXPECT_EQ(Setting::Query("key", &setting), 0);
  const std::unique_ptr<Setting> owner(setting);
  ASSERT_NE(setting, nullptr);
  EXPECT_EQ(setting->name(), "key");
  EXPECT_EQ(setting->value(), "text");
}

TEST_F(SettingTest, ThatIsMissingLeavesTheResultAlone) {
  std::string text = "before";
  int number = 5;
  Setting* setting = nullptr;
  EXPECT_EQ(Setting::Query("key", &setting), -1);
  EXPECT_EQ(setting, nullptr);
  EXPECT_EQ(Setting::QueryValue("key", &text), -1);
  EXPECT_EQ(Setting::QueryValue("key", &number), -1);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(number, 5);
}

TEST_F(SettingTest, IsReadAsText) {
  Store("12 text");
  std::string text;
  EXPECT_EQ(Setting::QueryValue("key", &text), 0);
  EXPECT_EQ(text, "12 text");
}

TEST_F(SettingTest, IsSaved) {
  Store("before");
  EXPECT_EQ(Setting("key", "after").Save(), 0);
  EXPECT_EQ(Setting("another", "after").Save(), -1);
  EXPECT_THAT(raw.Rows("SELECT * FROM setting"), ElementsAre("'key'|'after'"));
}

class SettingNumberTest : public SettingTest,
                          public testing::WithParamInterface<std::pair<const char*, int>> {};

TEST_P(SettingNumberTest, IsReadFromTheBeginningOfTheText) {
  Store(GetParam().first);
  int number = 0;
  EXPECT_EQ(Setting::QueryValue("key", &number), 0);
  EXPECT_EQ(number, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Texts, SettingNumberTest,
                         testing::Values(std::pair("42", 42), std::pair("12abc", 12), std::pair("-7", -7),
                                         std::pair(" 8", 8), std::pair("0x10", 0), std::pair("010", 10),
                                         std::pair("2147483647", 2147483647),
                                         std::pair("-2147483648", -2147483647 - 1)));

TEST_F(SettingTest, ThatIsNoNumberThrows) {
  int number = 5;
  Store("abc");
  EXPECT_THROW(Setting::QueryValue("key", &number), std::invalid_argument);
  EXPECT_EQ(Setting("key", "").Save(), 0);
  EXPECT_THROW(Setting::QueryValue("key", &number), std::invalid_argument);
  EXPECT_EQ(number, 5);
}

TEST_F(SettingTest, ThatDoesNotFitThrows) {
  int number = 5;
  Store("12345678901");
  try {
    Setting::QueryValue("key", &number);
    ADD_FAILURE() << "nothing thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "stoi");
  }
  EXPECT_EQ(number, 5);
}

}  // namespace
