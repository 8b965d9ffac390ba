// The broker's configuration as it is shipped: who gets in, and what it bears.
#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>

#include "contract/bundled_bus.h"
#include "contract/tcp_broker.h"
#include "integration/shipped_broker.h"
#include "model/child.h"
#include "support/raw_mqtt.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

namespace fs = std::filesystem;

struct stat StatusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

mode_t ModeOf(const std::string& path) { return StatusOf(path).st_mode & 07777; }

// 0 or errno.
int OpenResult(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return file.get() < 0 ? errno : 0;
}

int ConnectResult(const std::string& socket_path) {
  const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socket_path.copy(address.sun_path, sizeof address.sun_path - 1);
  return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ? errno : 0;
}

// "socket:[INODE]" of each socket that a process has.
std::set<std::string> SocketsOf(pid_t process) {
  std::set<std::string> sockets;
  for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
    std::error_code ignored;
    const std::string target = fs::read_symlink(entry.path(), ignored).string();
    if (target.compare(0, 8, "socket:[") == 0) sockets.insert(target);
  }
  return sockets;
}

// How many sockets of the Internet's protocols a process has.
int InternetSockets(pid_t process) {
  const std::set<std::string> sockets = SocketsOf(process);
  EXPECT_FALSE(sockets.empty());
  int count = 0;
  for (const char* table : {"tcp", "tcp6", "udp", "udp6", "raw", "raw6"}) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/net/" + table);
    std::string word;
    while (lines >> word) count += static_cast<int>(sockets.count("socket:[" + word + "]"));
  }
  return count;
}

class ShippedBrokerTest : public BundledBus {
 protected:
  ShippedBroker broker_{"broker.conf"};
};

TEST_F(ShippedBrokerTest, FoldersSocketAndDatabaseAreTheGroupsAlone) {
  broker_.StartService();
  EXPECT_EQ(ModeOf(broker_.run_folder()), 02750u);
  EXPECT_EQ(ModeOf(broker_.socket_path()), 0770u);
  EXPECT_EQ(ModeOf(broker_.state_folder()), 02750u);
  EXPECT_EQ(ModeOf(broker_.database()), 0640u);
  for (const auto& file : fs::directory_iterator(broker_.state_folder())) {
    EXPECT_EQ(ModeOf(file.path()) & 0137, 0u) << file.path();
  }
  const gid_t group = StatusOf(broker_.run_folder()).st_gid;
  EXPECT_EQ(StatusOf(broker_.socket_path()).st_gid, group);
  EXPECT_EQ(StatusOf(broker_.database()).st_gid, group);
}

TEST_F(ShippedBrokerTest, StrangerOpensNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be somebody else; the modes are tested above";
  broker_.StartService();
  RunInChild([this] {
    BecomeStranger();
    EXPECT_EQ(OpenResult(broker_.run_folder()), EACCES);
    EXPECT_EQ(ConnectResult(broker_.socket_path()), EACCES);
    EXPECT_EQ(OpenResult(broker_.state_folder()), EACCES);
    EXPECT_EQ(OpenResult(broker_.database()), EACCES);
    EXPECT_EQ(OpenResult(broker_.settings_folder() + "/broker.passwords"), EACCES);
    EXPECT_EQ(OpenResult(broker_.settings_folder() + "/broker.conf"), 0);
  });
  EXPECT_EQ(ConnectResult(broker_.socket_path()), 0);
}

TEST_F(ShippedBrokerTest, HasNoSocketOfTheInternet) {
  EXPECT_EQ(InternetSockets(broker_.pid()), 0);

  const Process other({VPTZ_MOSQUITTO, "-p", std::to_string(FreePort())});
  EXPECT_TRUE(WaitUntil([&] { return InternetSockets(other.pid()) > 0; })) << "this test would see none";
}

TEST_F(ShippedBrokerTest, PacketsAreAtMost256Kibibytes) {
  const ServedName service("camera", broker_.address(), [](bus_service*, bus_request* request) {
    Reply(request, std::to_string(Payload(request).size()));
  });
  const ClientPtr client = ConnectedTo(broker_.address());
  const auto told = [&](int size) {
    return Call(client.get(), "camera", "size", std::string(static_cast<std::size_t>(size), 'x'));
  };
  EXPECT_EQ(told(255 * 1024).reply, std::to_string(255 * 1024));
  EXPECT_EQ(told(256 * 1024).code, -EMSGSIZE);
  EXPECT_EQ(told(1).reply, "1");
}

TEST_F(ShippedBrokerTest, ConnectionsAreAtMost64AlsoWhenManyHaveGone) {
  for (int round = 0; round < 3; ++round) {
    std::vector<std::unique_ptr<RawMqtt>> connections;
    const auto connects = [&] {
      try {
        connections.push_back(std::make_unique<RawMqtt>(broker_.socket_path(), ""));
      } catch (const std::runtime_error&) {
        return false;
      }
      return true;
    };
    // Those of the round before may still be on their way out.
    while (connections.size() < 60) {
      ASSERT_TRUE(WaitUntil(connects)) << connections.size() << " in round " << round;
    }
    while (WaitUntil(connects, milliseconds(500)) && connections.size() < 100) continue;
    EXPECT_LE(connections.size(), 64u) << "round " << round;
  }
}

TEST_F(ShippedBrokerTest, NothingIsStoredBeyondARestart) {
  RawMqtt(broker_.socket_path(), "").Send({"dorv/presence/camera", "somebody", "", ""}, true);
  RawMqtt newcomer(broker_.socket_path(), "dorv/#");
  EXPECT_EQ(newcomer.WaitFor("presence").payload, "somebody");

  broker_.Restart();
  RawMqtt later(broker_.socket_path(), "dorv/#");
  later.Send({"dorv/signal/camera/end", "", "", ""});
  later.WaitFor("end");
  EXPECT_EQ(later.All().size(), 1u);
  for (const auto& file : fs::recursive_directory_iterator(broker_.run_folder())) {
    EXPECT_EQ(file.path(), broker_.socket_path());
  }
}

// A request must be executed while its caller waits, not at a later start.
TEST_F(ShippedBrokerTest, RequestThatTheBrokerKeepsIsNotExecutedAgain) {
  RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  const ClientPtr client = ConnectedTo(broker_.address());
  {
    const ServedName first("camera", broker_.address(), &Echo);
    EXPECT_EQ(Call(client.get(), "camera", "move", "1", 60).reply, "1");
  }
  watcher.Send(watcher.WaitFor("move"), true);
  std::vector<std::string> executed;
  ServedName second("camera", broker_.address(), [&](bus_service*, bus_request* request) {
    executed.push_back(Payload(request));
    Reply(request, "");
  });
  EXPECT_EQ(Call(client.get(), "camera", "move", "2").code, 0);
  second.Free();
  EXPECT_EQ(executed, std::vector<std::string>{"2"});
}

}  // namespace
}  // namespace vptz_test
