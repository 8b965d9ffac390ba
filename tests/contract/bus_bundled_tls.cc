#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "contract/bundled_bus.h"
#include "contract/tcp_broker.h"
#include "support/process.h"
#include "support/temp_dir.h"

namespace vptz_test {
namespace {

// Certificates made for each test: an authority, and keys that it signed.
class BundledTls : public BundledBus {
 protected:
  BundledTls() {
    MakeAuthority("authority");
    MakeSigned("server", "authority", "IP:127.0.0.1");
  }
  ~BundledTls() override { unsetenv("DORV_BUS_SETTINGS"); }

  std::string Path(const std::string& name) const { return folder_.path() + "/" + name; }

  void OpenSsl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), VPTZ_OPENSSL);
    const RunResult result = vptz_test::Run(std::move(arguments));
    if (result.exit_code != 0) throw std::runtime_error(result.errors);
  }

  void MakeAuthority(const std::string& name) const {
    OpenSsl({"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days",
             "2", "-subj", "/CN=" + name, "-keyout", Path(name + ".key"), "-out", Path(name + ".pem")});
  }

  void MakeSigned(const std::string& name, const std::string& authority, const std::string& alternative) const {
    OpenSsl({"req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
             "/CN=" + name, "-keyout", Path(name + ".key"), "-out", Path(name + ".csr")});
    std::ofstream(Path("extensions")) << "subjectAltName=" << alternative << "\n";
    OpenSsl({"x509", "-req", "-days", "2", "-in", Path(name + ".csr"), "-CA", Path(authority + ".pem"),
             "-CAkey", Path(authority + ".key"), "-CAcreateserial", "-extfile", Path("extensions"), "-out",
             Path(name + ".pem")});
  }

  std::vector<std::string> ServerLines(const std::string& server = "server") const {
    return {"certfile " + Path(server + ".pem"), "keyfile " + Path(server + ".key"),
            "cafile " + Path("authority.pem")};
  }

  void UseSettings(const std::string& tls) const {
    std::ofstream(Path("settings")) << "[tls]\n" << tls;
    setenv("DORV_BUS_SETTINGS", Path("settings").c_str(), 1);
  }

  // Whether a call gets through, or why there is no connection.
  static int Try(const std::string& address) {
    const ClientPtr client(bus_client_new("contract"));
    const int result = bus_connect(client.get(), address.c_str());
    if (result == 0) {
      const ServedName service("camera", address, &Echo);
      EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
      EXPECT_EQ(Call(client.get(), "camera", "echo", std::string(65536, 'y')).reply, std::string(65536, 'y'));
    }
    return result;
  }

  TempDir folder_;
};

TEST_F(BundledTls, TrustedBrokerIsReached) {
  const TcpBroker broker(ServerLines());
  UseSettings("ca_file=" + Path("authority.pem") + "\n");
  EXPECT_EQ(Try(broker.address()), 0);
}

TEST_F(BundledTls, ManyMessagesInOneRecordAllArrive) {
  const TcpBroker broker(ServerLines());
  UseSettings("ca_file=" + Path("authority.pem") + "\n");
  const ServedName service("camera", broker.address(), &Echo);
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(Emit(service.get(), "moved", std::to_string(i)), 0);
  EXPECT_TRUE(TheReceiver(0).WaitFor(200));
}

TEST_F(BundledTls, BrokerOfAnotherAuthorityIsRefused) {
  MakeAuthority("stranger");
  const TcpBroker broker(ServerLines());
  UseSettings("ca_file=" + Path("stranger.pem") + "\n");
  EXPECT_LT(Took([&] { EXPECT_EQ(Try(broker.address()), -EKEYREJECTED); }), kAtOnce);
}

TEST_F(BundledTls, BrokerWithAnotherHostsCertificateIsRefused) {
  MakeSigned("elsewhere", "authority", "DNS:elsewhere.example");
  const TcpBroker broker(ServerLines("elsewhere"));
  UseSettings("ca_file=" + Path("authority.pem") + "\n");
  EXPECT_LT(Took([&] { EXPECT_EQ(Try(broker.address()), -EKEYREJECTED); }), kAtOnce);
}

TEST_F(BundledTls, BrokerThatWantsACertificateGetsTheClients) {
  MakeSigned("client", "authority", "DNS:client");
  std::vector<std::string> lines = ServerLines();
  lines.emplace_back("require_certificate true");
  const TcpBroker broker(lines);
  const std::string authority = "ca_file=" + Path("authority.pem") + "\n";
  UseSettings(authority + "certificate=" + Path("client.pem") + "\nkey=" + Path("client.key") + "\n");
  EXPECT_EQ(Try(broker.address()), 0);
  UseSettings(authority);
  EXPECT_LT(Try(broker.address()), 0);
}

TEST_F(BundledTls, CertificatesThatCannotBeReadAreRefused) {
  const TcpBroker broker(ServerLines());
  UseSettings("ca_file=" + Path("missing.pem") + "\n");
  EXPECT_LT(Try(broker.address()), 0);
}

}  // namespace
}  // namespace vptz_test
