#include "model/model_test.h"

#include "model/schema_statements.h"

namespace vptz_test {

ModelTest::~ModelTest() { model().Release(); }

void ModelTest::MakeFile(const std::string& statements) { RawDatabase(path).Execute(statements); }

std::vector<std::string> ModelTest::Lines() const {
  std::vector<std::string> lines;
  for (const LogLine& line : log.lines) {
    EXPECT_EQ(line.module, 42) << line;
    EXPECT_GT(line.line, 0) << line;
    lines.push_back(std::to_string(line.level) + " " + line.message);
  }
  return lines;
}

std::vector<std::string> ModelTest::OldRowsOf(const std::string& file) const {
  RawDatabase database(file);
  std::vector<std::string> rows;
  for (const std::string& query : OldRowQueries()) {
    const std::vector<std::string> found = database.Rows(query);
    rows.insert(rows.end(), found.begin(), found.end());
  }
  return rows;
}

OpenModelTest::OpenModelTest() : raw(CreatedFile()) { log.lines.clear(); }

std::string OpenModelTest::CreatedFile() {
  EXPECT_EQ(Initialize(), 0);
  return path;
}

}  // namespace vptz_test
