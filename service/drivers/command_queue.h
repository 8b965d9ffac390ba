// What one camera is to be told, in the order in which the camera is to hear it.
//
// Single commands wait for their turn, but not beyond their deadlines. Of the
// velocities only the latest counts. A stop overtakes everything that waits, is
// repeated until the camera confirms it, and holds: no motion that was commanded
// before it leaves after it.
#ifndef VPTZ_SERVICE_DRIVERS_COMMAND_QUEUE_H
#define VPTZ_SERVICE_DRIVERS_COMMAND_QUEUE_H

#include <bitset>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "drivers/status.h"

namespace vptzd {

// What a command moves: pan, tilt, zoom, focus.
using Parts = std::bitset<4>;

// Time, and tasks for later, of the thread on which a driver lives.
class Timer {
 public:
  virtual ~Timer() = default;

  // Time since some fixed moment; never runs backwards.
  virtual std::chrono::nanoseconds Now() const = 0;

  // Runs the task on the driver's thread once `delay` is over, never before it
  // returns.
  virtual void RunIn(std::chrono::nanoseconds delay, std::function<void()> task) = 0;
};

// How fast a camera takes commands.
struct Pace {
  std::size_t outstanding = 1;          // commands that it takes before it has answered the first
  std::chrono::nanoseconds spacing{0};  // from one velocity to the next
  std::chrono::nanoseconds stop_interval = std::chrono::milliseconds(80);  // between repeated stops
  std::size_t waiting = 32;                                                // commands that may wait
};

// Belongs to one thread, the timer's. The timer outlives it.
class CommandQueue {
 public:
  using Done = std::function<void(Status)>;

  // Sends a command for these parts, and calls `answered` once, then or later:
  // with the camera's answer, or kOffline when none came in time. Calls after the
  // queue has gone are ignored.
  using Send = std::function<void(const Parts& parts, Done answered)>;

  enum class Kind {
    kSetting,  // moves nothing: a stop leaves it alone
    kMove,     // to a position or a preset
    kVelocity  // only the latest counts
  };

  struct Command {
    Kind kind = Kind::kSetting;
    Parts parts{};                         // none for a setting
    std::chrono::nanoseconds deadline{0};  // on the timer's clock: nobody waits for the answer any more
    Send send;
    Done done;
  };

  CommandQueue(Timer& timer, const Pace& pace) : timer_(timer), pace_(pace) {}

  // Answers kOffline to everything that has no answer yet. The functions called
  // then must not use the queue.
  ~CommandQueue();
  CommandQueue(const CommandQueue&) = delete;
  CommandQueue& operator=(const CommandQueue&) = delete;

  // Sends the command when its turn comes. Its `done` is called once, now or
  // later, and may use the queue but not destroy it: with the camera's answer;
  // kOffline at the deadline, and a command that has not left by then never does;
  // kDone for a motion that a later velocity or a stop replaced before it left;
  // kBusy when too many wait.
  void Add(Command command);

  // Sends a stop at once, whatever waits or is outstanding, and again until the
  // camera has confirmed it; anew after each answer to a motion that had left
  // before. `done` as above; the stop goes on after its deadline. Motions of these
  // parts that are added meanwhile wait for the confirmation.
  void Stop(const Parts& parts, std::chrono::nanoseconds deadline, Send send, Done done);

  // The camera is heard of again: an unconfirmed stop is repeated at once.
  void CameraIsBack();

 private:
  struct Entry {
    std::uint64_t number;
    Command command;
  };

  // A stop that is not over: not confirmed, or motions from before it are still
  // unanswered.
  struct Stopping {
    Parts parts;
    Send send;
    std::vector<Entry> waiting{};  // for the confirmation
    int repetitions = 0;
    std::uint64_t revision = 0;      // an answer to an older one confirms nothing
    std::uint64_t transmission = 0;  // the latest
    bool confirmed = false;
  };

  Entry* FindUnanswered(std::uint64_t number);
  void ExpectAnswer(const Entry& entry);
  void Expire(std::uint64_t number);
  void DropMotions(const Parts& parts);
  bool TakesPlaceOfLast(Command* command);
  bool MayLeave(std::size_t index) const;
  void SendWhatMayLeave();
  void SendNow(Entry entry);
  void TakeAnswer(std::uint64_t number, Status status);
  bool IsOutstanding(const Parts& parts) const;
  void SendStop();
  void TakeStopAnswer(std::uint64_t revision, bool last, Status status);
  std::chrono::nanoseconds StopInterval() const;
  template <class Method, class... Arguments>
  auto WhileThere(Method method, Arguments... arguments);

  Timer& timer_;
  const Pace pace_;
  std::uint64_t added_ = 0;
  std::deque<Entry> waiting_;
  std::vector<Entry> outstanding_;
  std::chrono::nanoseconds next_velocity_{0};
  bool velocity_timer_runs_ = false;
  std::optional<Stopping> stopping_;
  std::uint64_t revisions_ = 0;
  const std::shared_ptr<int> there_ = std::make_shared<int>(0);  // what comes later looks whether it is
};

}  // namespace vptzd

#endif
