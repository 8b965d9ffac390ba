#include "fixture.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::RunResult;

class PythonTest : public vptz_test::ServiceTest {
 protected:
  RunResult RunPython(const std::string& program) const {
    const std::string module = "PYTHONPATH=" VPTZ_PYTHON_MODULE;
    const std::string source = "VPTZ_TEST_SOURCE=" VPTZ_SOURCE;
    return RunHere(
        {VPTZ_PYTHON, "-X", "dev", "-B", program},
        {module, source, "VPTZ_TEST_DATABASE=" + Database(), "VPTZ_TEST_BROKER=" + std::to_string(broker.pid()),
         "VPTZ_TEST_SERVICE=" + std::to_string(service->pid())});
  }

  void Test(const std::string& name) const {
    const RunResult result = RunPython(std::string(VPTZ_PYTHON_TESTS) + "/test_" + name + ".py");
    EXPECT_EQ(result.exit_code, 0) << result.errors;
  }

  // What an example prints; it must succeed.
  std::string Example(const std::string& name) const {
    const RunResult result = RunPython(std::string(VPTZ_PYTHON_EXAMPLES) + "/" + name + ".py");
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
};

TEST_F(PythonTest, TheModuleDrivesCameras) { Test("vptz"); }

TEST_F(PythonTest, AnInterruptEndsEachCallAtOnce) { Test("interrupt"); }

TEST_F(PythonTest, ClientsComeAndGoWhileOthersWork) { Test("clients"); }

TEST_F(PythonTest, EveryOperationIsOfferedAndListed) { Test("operations"); }

TEST_F(PythonTest, TheExampleListsTheCameras) { EXPECT_THAT(Example("status"), HasSubstr("ptz0")); }

TEST_F(PythonTest, TheExampleMovesAndStops) { EXPECT_THAT(Example("move"), HasSubstr("stands at pan ")); }

TEST_F(PythonTest, TheExampleSearches) { EXPECT_THAT(Example("search"), HasSubstr("found")); }

}  // namespace
