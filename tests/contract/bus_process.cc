// What the library leaves alone in the application's process.
#include <fcntl.h>
#include <locale.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

volatile sig_atomic_t broken_pipes = 0;
void CountBrokenPipe(int) { broken_pipes = broken_pipes + 1; }

class BusProcess : public BusContract {
 protected:
  // Everything that touches sockets, with the broker dying under it. Of so many
  // clients some write before they have noticed that.
  void UseEverything() {
    const auto service = Serve();
    std::vector<ClientPtr> clients;
    for (int i = 0; i < 40; ++i) {
      clients.push_back(Connected());
      EXPECT_EQ(bus_signal_subscribe(clients.back().get(), "camera", "moved", TheReceiver(0).callback), 0);
    }
    const ClientPtr& first = clients.front();
    EXPECT_EQ(Call(first.get(), "camera", "echo", "x").reply, "x");
    peer_->KillBroker();
    for (std::size_t i = 0; i < clients.size(); i += 4) {
      EXPECT_LT(Call(clients[i].get(), "camera", "echo", "x").code, 0);
      EXPECT_EQ(bus_signal_unsubscribe(clients[i + 1].get(), "camera", "moved"), 0);
      EXPECT_EQ(bus_disconnect(clients[i + 2].get()), 0);
      clients[i + 3].reset();
    }
    service->Emit("moved", std::string(100000, 'x'));
    peer_->StartBroker();
    EXPECT_TRUE(WaitUntil([&] { return Call(first.get(), "camera", "echo", "y").reply == "y"; }));
  }

  static struct sigaction Disposition(int number) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    return action;
  }
};

TEST_F(BusProcess, DefaultDispositionOfSigpipeStays) {
  signal(SIGPIPE, SIG_DFL);
  UseEverything();
  EXPECT_EQ(Disposition(SIGPIPE).sa_handler, SIG_DFL);
}

TEST_F(BusProcess, HandlerOfSigpipeStaysAndIsNotCalled) {
  struct sigaction action {};
  action.sa_handler = &CountBrokenPipe;
  action.sa_flags = SA_RESTART;
  sigaddset(&action.sa_mask, SIGUSR2);
  sigaction(SIGPIPE, &action, nullptr);
  UseEverything();
  const struct sigaction after = Disposition(SIGPIPE);
  EXPECT_EQ(after.sa_handler, &CountBrokenPipe);
  EXPECT_EQ(after.sa_flags & SA_RESTART, SA_RESTART);
  EXPECT_EQ(sigismember(&after.sa_mask, SIGUSR2), 1);
  EXPECT_EQ(broken_pipes, 0);
}

TEST_F(BusProcess, IgnoredSigpipeStaysIgnored) {
  signal(SIGPIPE, SIG_IGN);
  UseEverything();
  EXPECT_EQ(Disposition(SIGPIPE).sa_handler, SIG_IGN);
}

// Held back so that a test can see whether one is pending.
class SigpipeHeldBack {
 public:
  SigpipeHeldBack() {
    sigemptyset(&set_);
    sigaddset(&set_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set_, nullptr);
  }
  ~SigpipeHeldBack() {
    Take();
    pthread_sigmask(SIG_UNBLOCK, &set_, nullptr);
  }
  bool Take() const {
    const timespec at_once{};
    return sigtimedwait(&set_, nullptr, &at_once) == SIGPIPE;
  }

 private:
  sigset_t set_;
};

TEST_F(BusProcess, NoSigpipeIsLeftPendingWhereTheApplicationHoldsItBack) {
  const SigpipeHeldBack held_back;
  UseEverything();
  EXPECT_FALSE(held_back.Take());
}

TEST_F(BusProcess, SigpipeThatWasPendingStaysPending) {
  const SigpipeHeldBack held_back;
  const ClientPtr client = Connected();
  raise(SIGPIPE);
  peer_->KillBroker();
  EXPECT_LT(Call(client.get(), "camera", "echo", std::string(100000, 'x')).code, 0);
  EXPECT_TRUE(held_back.Take());
}

TEST_F(BusProcess, EveryOtherDispositionStays) {
  std::vector<decltype(Disposition(0).sa_handler)> before;
  for (int number = 1; number < NSIG; ++number) before.push_back(Disposition(number).sa_handler);
  UseEverything();
  for (int number = 1; number < NSIG; ++number) {
    EXPECT_EQ(Disposition(number).sa_handler, before[static_cast<std::size_t>(number - 1)]) << number;
  }
}

TEST_F(BusProcess, SignalMaskOfTheCallerStays) {
  sigset_t wanted;
  sigemptyset(&wanted);
  sigaddset(&wanted, SIGUSR1);
  pthread_sigmask(SIG_SETMASK, &wanted, nullptr);
  UseEverything();
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int number = 1; number < NSIG; ++number)
    EXPECT_EQ(sigismember(&after, number), sigismember(&wanted, number));
}

TEST_F(BusProcess, LocaleStays) {
  const std::string before = setlocale(LC_ALL, nullptr);
  UseEverything();
  EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
}

TEST_F(BusProcess, StandardStreamsStay) {
  std::vector<struct stat> before(3);
  for (int i = 0; i < 3; ++i) fstat(i, &before[static_cast<std::size_t>(i)]);
  UseEverything();
  for (int i = 0; i < 3; ++i) {
    struct stat after {};
    EXPECT_EQ(fstat(i, &after), 0);
    EXPECT_EQ(after.st_ino, before[static_cast<std::size_t>(i)].st_ino);
  }
}

TEST_F(BusProcess, DescriptorsAboveAThousandWork) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_max < 2048) GTEST_SKIP() << "the hard limit of descriptors is too low";
  limit.rlim_cur = 2048;
  setrlimit(RLIMIT_NOFILE, &limit);
  std::vector<int> descriptors;
  while (descriptors.empty() || descriptors.back() < 1100)
    descriptors.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));

  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_TRUE(service->Emit("moved"));
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
  for (const int descriptor : descriptors) close(descriptor);
}

}  // namespace
}  // namespace vptz_test
