#include "integration/integration.h"

#include <stdexcept>

namespace vptz_test {

void Integration::StartService() {
  service_.emplace(
      std::vector<std::string>{VPTZD, "--cameras", "2", "--database", broker_.folder() + "/vptz.db"},
      std::vector<std::string>{"DORV_BUS_ADDRESS=" + broker_.address()});
  const bool serves = WaitUntil(
      [this] { return service_->Output().find("serving") != std::string::npos || !service_->Running(); });
  if (!serves || !service_->Running()) {
    throw std::runtime_error("vptzd does not serve: " + service_->Output() + service_->Errors());
  }
}

std::unique_ptr<VptzClient> Integration::Connected() const {
  auto client = std::make_unique<VptzClient>();
  EXPECT_EQ(client->Connect("integration", broker_.address().c_str()), 0);
  return client;
}

double Integration::Pan(VptzClient& client, unsigned camera) {
  VptzPtzData profile;
  EXPECT_EQ(client.QueryPtzProfiles(camera, "ptz0", &profile), 0);
  EXPECT_EQ(profile.pan.position.valid, 1);
  return profile.pan.position.value;
}

}  // namespace vptz_test
