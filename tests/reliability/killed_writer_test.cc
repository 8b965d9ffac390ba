// What a process leaves that is killed while it writes rows.
#include <sys/wait.h>
#include <unistd.h>
#include <vptz/model/event.h>
#include <vptz/model/preset.h>

#include <csignal>
#include <random>
#include <stdexcept>

#include "model/model_test.h"
#include "reliability/reliability.h"

namespace vptz_test {
namespace {

constexpr int kGroup = 5;

// Both ends of a pipe.
class Pipe {
 public:
  Pipe() {
    if (pipe(ends_) != 0) throw std::runtime_error("no pipe");
  }
  ~Pipe() {
    Close(0);
    Close(1);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void Close(int end) {
    if (ends_[end] >= 0) close(ends_[end]);
    ends_[end] = -1;
  }
  bool Write(int number) const { return write(ends_[1], &number, sizeof number) == sizeof number; }
  bool Read(int* number) const { return read(ends_[0], number, sizeof *number) == sizeof *number; }

 private:
  int ends_[2];
};

class KilledWriter : public OpenModelTest {
 protected:
  // Writes until it is killed: for each number a group of presets, all or none,
  // and both texts of one event. Tells each number when its rows are stored.
  [[noreturn]] static void WriteForEver(const std::string& file, int number, const Pipe& told) {
    alarm(60);
    if (VptzModel::Instance().Connect(file) != 0) _exit(1);
    for (;; ++number) {
      std::vector<Preset> group(kGroup);
      for (Preset& preset : group) preset.set_preset_id(static_cast<unsigned>(number));
      Event event("both", std::to_string(number));
      event.set_id(1);
      event.set_reserved(std::to_string(number));
      const bool stored = Preset::AddAll(group.data(), kGroup) == 0 && Event::Update(event) == 0;
      if (!stored || !told.Write(number)) _exit(1);
    }
  }

  // The number that was told last before the writer was killed.
  int WriteAndKill(int first, int until) {
    Pipe told;
    const pid_t child = fork();
    if (child == 0) WriteForEver(path, first, told);
    told.Close(1);
    int last = first - 1;
    while (last < until && told.Read(&last)) {
    }
    kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status)) << "wait status " << status;
    while (told.Read(&last)) {
    }
    return last;
  }

  // Whole groups only, none missing of those that were told.
  void ExpectWhole(int told) {
    EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
    EXPECT_EQ(raw.Value("SELECT count(*) FROM (SELECT 1 FROM preset GROUP BY preset_id HAVING count(*) <> 5)"),
              "0");
    EXPECT_EQ(
        raw.Value("SELECT count(DISTINCT preset_id) FROM preset WHERE preset_id <= " + std::to_string(told)),
        std::to_string(told));
    EXPECT_EQ(raw.Value("SELECT message = reserved AND CAST(message AS INTEGER) >= " + std::to_string(told) +
                        " FROM event"),
              "1");
  }
};

TEST_F(KilledWriter, LeavesEveryTransactionWholeAndLosesNoneThatWasTold) {
  Event event("both", "0");
  event.set_reserved("0");
  ASSERT_EQ(Event::Add(&event), 1);
  model().Release();
  std::mt19937 random(50);
  const int kills = Scaled(50, 500);
  int told = 0;
  for (int i = 0; i < kills && !HasFailure(); ++i) {
    SCOPED_TRACE("kill " + std::to_string(i));
    told = WriteAndKill(told + 1, told + static_cast<int>(random() % 20));
    ExpectWhole(told);
    // One more group may be stored that was not told: the next writer begins with it.
    raw.Execute("DELETE FROM preset WHERE preset_id > " + std::to_string(told));
  }
  RecordProperty("kills", kills);
}

}  // namespace
}  // namespace vptz_test
