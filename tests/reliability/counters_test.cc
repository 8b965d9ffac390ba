// Several processes that read a row, change it and write it back.
#include <sys/wait.h>
#include <unistd.h>
#include <vptz/model/event.h>

#include "model/model_test.h"

namespace vptz_test {
namespace {

constexpr int kProcesses = 4;
constexpr int kSteps = 1000;

std::string NameOf(int process) { return "counter " + std::to_string(process); }

bool CountOne(const std::string& name) {
  Event* found = nullptr;
  if (Event::QueryByName(&found, name) != 0) return false;
  const std::unique_ptr<Event> event(found);
  event->set_message(std::to_string(std::stoi(event->message()) + 1));
  return Event::Update(*event) == 0;
}

class Counters : public OpenModelTest {
 protected:
  pid_t StartCounting(int process) const {
    const pid_t child = fork();
    if (child == 0) {
      alarm(100);
      int failures = VptzModel::Instance().Connect(path) == 0 ? 0 : 1;
      for (int i = 0; i < kSteps && failures == 0; ++i) failures += CountOne(NameOf(process)) ? 0 : 1;
      _exit(failures);
    }
    return child;
  }
};

TEST_F(Counters, OfFourProcessesAtOnceLoseNoStep) {
  for (int i = 0; i < kProcesses; ++i) {
    Event event(NameOf(i), "0");
    ASSERT_GT(Event::Add(&event), 0);
  }
  model().Release();
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) children.push_back(StartCounting(i));
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(raw.Value("SELECT sum(message) FROM event"), std::to_string(kProcesses * kSteps));
  EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
}

}  // namespace
}  // namespace vptz_test
