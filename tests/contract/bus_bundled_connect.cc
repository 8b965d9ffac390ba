// How long connecting may take, and brokers that do not offer what the bus needs.
#include <cerrno>
#include <cstdlib>
#include <fstream>

#include "contract/bundled_bus.h"
#include "contract/slow_line.h"
#include "contract/tcp_broker.h"
#include "support/broker.h"
#include "support/temp_dir.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

// Connecting takes two rounds there and back, each longer than a second.
constexpr milliseconds kDelay{600};

class BundledConnect : public BundledBus {
 protected:
  ~BundledConnect() override {
    unsetenv("DORV_BUS_SETTINGS");
    unsetenv("DORV_BUS_CONNECT_TIMEOUT");
  }

  void UseFile(const std::string& value) const {
    const std::string path = folder_.path() + "/settings";
    std::ofstream(path) << "[broker]\nconnect_timeout=" << value << '\n';
    setenv("DORV_BUS_SETTINGS", path.c_str(), 1);
  }
  static void UseVariable(const std::string& value) { setenv("DORV_BUS_CONNECT_TIMEOUT", value.c_str(), 1); }
  static int ConnectTo(const std::string& address) {
    const ClientPtr client(bus_client_new("contract"));
    return bus_connect(client.get(), address.c_str());
  }

  TempDir folder_;
};

TEST_F(BundledConnect, TakesTwoSecondsAtMostAndGoesOnInTheBackground) {
  const TcpBroker broker;
  const ServedName service("camera", broker.address(), &Echo);
  const SlowLine line(broker.port(), kDelay);
  const ClientPtr client(bus_client_new("contract"));
  EXPECT_LT(Took([&] { EXPECT_EQ(bus_connect(client.get(), line.address().c_str()), -ETIMEDOUT); }),
            kDefaultTimeout + kSlack);
  EXPECT_TRUE(WaitUntil([&] { return Call(client.get(), "camera", "echo", "x", 20).reply == "x"; }));
}

TEST_F(BundledConnect, TakesAsLongAsTheVariableSays) {
  const TcpBroker broker;
  const SlowLine line(broker.port(), kDelay);
  UseVariable("20");
  EXPECT_EQ(ConnectTo(line.address()), 0);
  const ServedName service("camera", line.address(), &Echo);
  EXPECT_EQ(service.result(), 0);
}

TEST_F(BundledConnect, TakesAsLongAsTheFileSays) {
  const TcpBroker broker;
  const SlowLine line(broker.port(), kDelay);
  UseFile("20");
  EXPECT_EQ(ConnectTo(line.address()), 0);
}

TEST_F(BundledConnect, TakesNoLongerThanTheVariableSaysWhateverTheFileSays) {
  Broker broker;
  broker.Stop();
  UseFile("20");
  UseVariable("1");
  EXPECT_LT(Took([&] { EXPECT_EQ(ConnectTo(broker.address()), -ETIMEDOUT); }),
            std::chrono::seconds(1) + kSlack);
  broker.Continue();
}

TEST_F(BundledConnect, TimeThatIsNoneIsRefused) {
  const Broker broker;
  for (const char* value : {"0", "3601", "-1", "1.5", "2s", " 2", "two", "99999999999999999999"}) {
    UseVariable(value);
    EXPECT_EQ(ConnectTo(broker.address()), -EINVAL) << value;
  }
  for (const char* value : {"", "1", "3600"}) {
    UseVariable(value);
    EXPECT_EQ(ConnectTo(broker.address()), 0) << value;
  }
  UseFile("0");
  EXPECT_EQ(ConnectTo(broker.address()), -EINVAL);
  UseFile("3600");
  EXPECT_EQ(ConnectTo(broker.address()), 0);
}

TEST_F(BundledConnect, BrokerThatDoesNotOfferWhatTheBusNeedsIsTold) {
  for (const char* line : {"max_qos 0", "retain_available false"}) {
    const Broker broker({line});
    EXPECT_LT(Took([&] { EXPECT_EQ(ConnectTo(broker.address()), -EOPNOTSUPP) << line; }), kAtOnce);
    EXPECT_EQ(ServedName("camera", broker.address(), &Echo).result(), -EOPNOTSUPP) << line;
  }
}

}  // namespace
}  // namespace vptz_test
