#include "fixture.h"

#include <chrono>
#include <fstream>
#include <stdexcept>

#include "support/wait_until.h"

namespace vptz_test {

ServiceTest::ServiceTest() {
  std::ofstream(folder.path() + "/vptz.conf") << "[MQTT]\ntimeout=10\n\n[VPTZ]\nndi_preset_shift=0\n";
  service.emplace(
      std::vector<std::string>{VPTZD, "--bus", broker.address(), "--database", Database(), "--cameras", "2"});
  if (!WaitUntil([this] { return service->Output().find("serving") != std::string::npos; })) {
    throw std::runtime_error("vptzd does not serve: " + service->Errors());
  }
}

RunResult ServiceTest::RunHere(const std::vector<std::string>& words,
                               std::vector<std::string> environment) const {
  environment.push_back("VPTZ_TEST_FOLDER=" + folder.path());
  environment.push_back("DORV_BUS_ADDRESS=" + broker.address());
  environment.emplace_back("LD_LIBRARY_PATH=" VPTZ_CLIENT_LIBRARY_FOLDER);
  return vptz_test::Run(words, environment, "", std::chrono::seconds(60));
}

}  // namespace vptz_test
