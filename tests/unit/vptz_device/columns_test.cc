// How a registry load reads the columns of a row. SQLite may give another type for a
// column whose value has been converted, and no text when memory runs out in that;
// versions differ in when they do. So the test stands between the library and SQLite.
#include <dlfcn.h>
#include <sqlite3.h>

#include <gmock/gmock.h>

#include <set>
#include <utility>

#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace {

// What the library asks of SQLite while one lives. Its texts may be failed.
struct Watch {
  Watch() { present = this; }
  ~Watch() { present = nullptr; }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  void Read(sqlite3_stmt* statement, int column) {
    values.emplace(statement, column);
    ++reads;
  }

  static inline Watch* present = nullptr;
  std::set<std::pair<sqlite3_stmt*, int>> values;  // of the present rows
  int reads = 0;
  int types_after_values = 0;
  int texts_until_memory_runs_out = -1;
  bool out_of_memory = false;
};

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int sqlite3_step(sqlite3_stmt* statement) {
  static const auto real = Real<decltype(sqlite3_step)>("sqlite3_step");
  if (Watch::present != nullptr) {
    auto& values = Watch::present->values;
    values.erase(values.lower_bound({statement, 0}), values.upper_bound({statement, 1000}));
  }
  return real(statement);
}

int sqlite3_column_type(sqlite3_stmt* statement, int column) {
  static const auto real = Real<decltype(sqlite3_column_type)>("sqlite3_column_type");
  if (Watch::present != nullptr && Watch::present->values.count({statement, column}) > 0)
    ++Watch::present->types_after_values;
  return real(statement, column);
}

sqlite3_int64 sqlite3_column_int64(sqlite3_stmt* statement, int column) {
  static const auto real = Real<decltype(sqlite3_column_int64)>("sqlite3_column_int64");
  if (Watch::present != nullptr) Watch::present->Read(statement, column);
  return real(statement, column);
}

double sqlite3_column_double(sqlite3_stmt* statement, int column) {
  static const auto real = Real<decltype(sqlite3_column_double)>("sqlite3_column_double");
  if (Watch::present != nullptr) Watch::present->Read(statement, column);
  return real(statement, column);
}

const unsigned char* sqlite3_column_text(sqlite3_stmt* statement, int column) {
  static const auto real = Real<decltype(sqlite3_column_text)>("sqlite3_column_text");
  if (Watch::present != nullptr) {
    Watch::present->Read(statement, column);
    if (Watch::present->texts_until_memory_runs_out-- == 0) Watch::present->out_of_memory = true;
    if (Watch::present->out_of_memory) return nullptr;
  }
  return real(statement, column);
}

int sqlite3_errcode(sqlite3* database) {
  static const auto real = Real<decltype(sqlite3_errcode)>("sqlite3_errcode");
  return Watch::present != nullptr && Watch::present->out_of_memory ? SQLITE_NOMEM : real(database);
}

}  // extern "C"

namespace {

class ColumnsTest : public vptz_test::ConnectedClientTest {
 protected:
  ColumnsTest() {
    Store(vptz_test::TwoDevicesWithEverything() +
          vptz_test::Insert("preset", {{"ptz", "21"}, {"token", "'t'"}, {"pan", "1"}}) +
          vptz_test::InsertMediaParameter(11, "width", "5, 1, 9"));
  }
};

TEST_F(ColumnsTest, TheTypeOfEachIsAskedForBeforeItsValue) {
  Watch watch;
  EXPECT_EQ(client.LoadDevices(), 0);
  EXPECT_GT(watch.reads, 50);
  EXPECT_EQ(watch.types_after_values, 0);
}

TEST_F(ColumnsTest, ATextThatLacksMemoryFailsTheLoadInsteadOfReadingAsEmpty) {
  {
    Watch watch;
    watch.texts_until_memory_runs_out = 3;
    EXPECT_EQ(client.LoadDevices(), -1);
    EXPECT_TRUE(watch.out_of_memory);
  }
  ASSERT_FALSE(log.lines.empty());
  EXPECT_EQ(log.lines.back().message, "Failed to load the devices: memory ran out");
  EXPECT_EQ(client.QueryDeviceAll()->size(), 3u);
}

}  // namespace
