#include "fixture.h"

namespace {

using vptz_test::RunResult;

class PythonTest : public vptz_test::ServiceTest {};

TEST_F(PythonTest, TheModuleDrivesCameras) {
  const RunResult result =
      RunHere({VPTZ_PYTHON, "-X", "dev", VPTZ_PYTHON_TESTS}, {"PYTHONPATH=" VPTZ_PYTHON_MODULE});
  EXPECT_EQ(result.exit_code, 0) << result.errors;
}

}  // namespace
