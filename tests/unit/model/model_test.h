#ifndef VPTZ_TESTS_UNIT_MODEL_MODEL_TEST_H
#define VPTZ_TESTS_UNIT_MODEL_MODEL_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vptz/model/vptzmodel.h>

#include <memory>
#include <string>
#include <vector>

#include "model/raw_database.h"
#include "support/recording_log.h"
#include "support/temp_dir.h"

namespace vptz_test {

// A database file of its own; whatever is open is closed afterwards.
class ModelTest : public testing::Test {
 protected:
  ~ModelTest() override;

  VptzModel& model() { return VptzModel::Instance(); }

  // Initialize with the library's schema and no script.
  int Initialize() { return model().Initialize(path, "vptz", ""); }

  // Makes the file with these statements, without the library.
  void MakeFile(const std::string& statements);

  // The lines of the log as "LEVEL MESSAGE".
  std::vector<std::string> Lines() const;

  // Every row that OldRows brought.
  std::vector<std::string> OldRowsOf(const std::string& file) const;

  TempDir dir;
  const std::string path = dir.path() + "/vptz.db";
  RecordingLog log;
};

// A ModelTest with an empty database of the current version open.
class OpenModelTest : public ModelTest {
 protected:
  OpenModelTest();

  RawDatabase raw;

 private:
  std::string CreatedFile();
};

// The object that a query to a single row gives; null when it fails.
template <class Row>
std::unique_ptr<Row> ById(unsigned int id) {
  Row* row = nullptr;
  const int result = Row::QueryById(&row, id);
  EXPECT_EQ(result, row == nullptr ? -1 : 0);
  return std::unique_ptr<Row>(row);
}

// Frees its rows.
template <class Row>
struct Rows : std::vector<Row*> {
  Rows() = default;
  ~Rows() { VptzModel::CleanQuery(this); }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
};

}  // namespace vptz_test

#endif
