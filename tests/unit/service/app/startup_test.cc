#include "app/startup.h"

#include <cerrno>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vptz_test {
namespace {

using testing::HasSubstr;
using vptzd::DescribeStartFailure;
using vptzd::ExitCodeOf;

TEST(Startup, NameTakenHasAnExitCodeOfItsOwn) {
  EXPECT_EQ(ExitCodeOf(-EADDRINUSE), 4);
  for (const int error : {-ENOENT, -ECONNREFUSED, -EPERM, -EACCES, -EKEYREJECTED, -ETIMEDOUT, -EINVAL}) {
    EXPECT_EQ(ExitCodeOf(error), 3) << error;
  }
}

TEST(Startup, FailureTellsWhatWhereAndWhy) {
  EXPECT_EQ(DescribeStartFailure("unix:/x/bus.sock", -ENOENT),
            "vptzd: cannot serve \"vptz\" on the bus at unix:/x/bus.sock: No such file or directory (-2)");
}

TEST(Startup, FailureNamesTheDefaultAddress) {
  EXPECT_THAT(DescribeStartFailure(nullptr, -ENOENT), HasSubstr("DORV_BUS_ADDRESS"));
}

TEST(Startup, FailureExplainsWhatTheErrnoTextDoesNot) {
  EXPECT_THAT(DescribeStartFailure("x", -EADDRINUSE), HasSubstr("another service has that name"));
  EXPECT_THAT(DescribeStartFailure("x", -EINVAL), HasSubstr("mqtt://host[:port] or unix:/path"));
  EXPECT_THAT(DescribeStartFailure("x", -EKEYREJECTED), HasSubstr("refuses user name, password"));
  EXPECT_THAT(DescribeStartFailure("x", -EPROTO), HasSubstr("MQTT 5"));
}

}  // namespace
}  // namespace vptz_test
