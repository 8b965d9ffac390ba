#include "drivers/protocols.h"

#include <set>

#include "store/changes.h"
#include "stored_simulation.h"

namespace vptz_test {
namespace {

using vptzd::HasProtocol;
using vptzd::ProtocolNamed;

class ProtocolsTest : public StoredSimulation {};

TEST_F(ProtocolsTest, AreThoseOfTheDatabase) {
  std::set<std::string> names;
  for (const auto& protocol : vptzd::Protocols()) {
    EXPECT_TRUE(vptzd::IsProtocol(protocol.name)) << protocol.name;
    names.insert(protocol.name);
  }
  EXPECT_EQ(names.size(), RowCount<Protocol>());
}

TEST(Protocols, EachMakesItsServiceAddress) {
  EXPECT_EQ(ProtocolNamed("ONVIF").ServiceUri("192.0.2.1"), "http://192.0.2.1/onvif/device_service");
  EXPECT_EQ(ProtocolNamed("VISCA_OVER_IP").ServiceUri("192.0.2.1"), "visca://192.0.2.1:52381");
  EXPECT_EQ(ProtocolNamed("NDIHX").ServiceUri("192.0.2.1"), "http://192.0.2.1/ndihx");
  EXPECT_EQ(ProtocolNamed("RS232").ServiceUri("ttyS0"), "rs232://ttyS0");
}

TEST(Protocols, OneThatIsNotInTheTableIsOneOfTheNetwork) {
  EXPECT_FALSE(HasProtocol("PELCO"));
  EXPECT_FALSE(ProtocolNamed("PELCO").serial);
  EXPECT_EQ(ProtocolNamed("PELCO").preset_shift, 0u);
  EXPECT_TRUE(HasProtocol("NDI"));
  EXPECT_FALSE(HasProtocol(""));
}

TEST(Protocols, AreNamedForPeople) {
  EXPECT_EQ(vptzd::ProtocolNames(), "ONVIF, RS232, QX310, NDI, VISCA_OVER_IP or NDIHX");
}

}  // namespace
}  // namespace vptz_test
