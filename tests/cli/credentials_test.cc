#include "credentials.h"

#include <gtest/gtest.h>

namespace {

using vptzctl::ReadStoredLogin;

TEST(CredentialsTest, BothTextsAreRead) {
  const auto login = ReadStoredLogin(R"({"account": "admin", "credentials": "a\u00fcb", "more": 1})");
  ASSERT_TRUE(login);
  EXPECT_EQ(login->account, "admin");
  EXPECT_EQ(login->credentials, "a\u00fcb");
}

TEST(CredentialsTest, AnythingElseHoldsNone) {
  for (const char* text :
       {"", "{}", "[]", "null", "{\"account\": \"admin\"}", "{\"account\": 1, \"credentials\": \"b\"}",
        "{\"account\": \"a\", \"credentials\": \"b\"", "{\"account\": \"a\", \"credentials\": \"b\"} x"}) {
    EXPECT_FALSE(ReadStoredLogin(text)) << text;
  }
}

TEST(CredentialsTest, ATextThatWouldBeCutIsRefused) {
  EXPECT_FALSE(ReadStoredLogin(R"({"account": "admin\u0000x", "credentials": "b"})"));
  EXPECT_FALSE(ReadStoredLogin(R"({"account": "admin", "credentials": "b\u0000"})"));
}

}  // namespace
