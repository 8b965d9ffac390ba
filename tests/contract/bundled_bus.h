// What the tests of the bundled bus share: a broker whose configuration they choose.
#ifndef VPTZ_TESTS_CONTRACT_BUNDLED_BUS_H
#define VPTZ_TESTS_CONTRACT_BUNDLED_BUS_H

#include <string>

#include "contract/served_name.h"

namespace vptz_test {

class BundledBus : public testing::Test {
 protected:
  BundledBus() {
    for (int index = 0; index < kReceivers; ++index) TheReceiver(index).Clear();
  }
};

inline ClientPtr ConnectedTo(const std::string& address) {
  ClientPtr client(bus_client_new("contract"));
  EXPECT_EQ(bus_connect(client.get(), address.c_str()), 0);
  return client;
}

}  // namespace vptz_test

#endif
