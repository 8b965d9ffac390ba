#include "drivers/command_queue.h"

#include <algorithm>
#include <utility>

namespace vptzd {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

bool IsMotion(const CommandQueue::Command& command) { return command.kind != CommandQueue::Kind::kSetting; }

void Answer(CommandQueue::Command* command, Status status) {
  if (const auto done = std::exchange(command->done, nullptr)) done(status);
}

}  // namespace

// A function for later that does nothing once the queue has gone.
template <class Method, class... Arguments>
auto CommandQueue::WhileThere(Method method, Arguments... arguments) {
  return [this, there = std::weak_ptr<int>(there_), method, arguments...](auto... more) {
    if (!there.expired()) (this->*method)(arguments..., more...);
  };
}

CommandQueue::~CommandQueue() {
  auto waiting = std::move(waiting_);
  auto outstanding = std::move(outstanding_);
  for (Entry& entry : outstanding) Answer(&entry.command, Status::kOffline);
  for (Entry& entry : waiting) Answer(&entry.command, Status::kOffline);
  if (!stopping_) return;
  for (Entry& entry : stopping_->waiting) Answer(&entry.command, Status::kOffline);
}

void CommandQueue::Add(Command command) {
  if (command.deadline <= timer_.Now()) return command.done(Status::kOffline);
  if (command.kind == Kind::kVelocity && TakesPlaceOfLast(&command)) return SendWhatMayLeave();
  if (command.kind == Kind::kVelocity) DropMotions(command.parts);
  if (waiting_.size() >= pace_.waiting) return command.done(Status::kBusy);
  waiting_.push_back({++added_, std::move(command)});
  ExpectAnswer(waiting_.back());
  SendWhatMayLeave();
}

void CommandQueue::ExpectAnswer(const Entry& entry) {
  timer_.RunIn(std::max(entry.command.deadline - timer_.Now(), nanoseconds(0)),
               WhileThere(&CommandQueue::Expire, entry.number));
}

// Where the last motion that waits is a velocity of the same parts, the new one
// goes in its place, so that no stream of velocities is held up by what was added
// between them.
bool CommandQueue::TakesPlaceOfLast(Command* command) {
  const auto last = std::find_if(waiting_.rbegin(), waiting_.rend(),
                                 [](const Entry& entry) { return IsMotion(entry.command); });
  if (last == waiting_.rend() || last->command.kind != Kind::kVelocity) return false;
  if (last->command.parts != command->parts) return false;
  std::swap(last->command, *command);
  last->number = ++added_;
  ExpectAnswer(*last);
  Answer(command, Status::kDone);
  return true;
}

// What waits does not move these parts any more; a motion with no other part is
// over.
void CommandQueue::DropMotions(const Parts& parts) {
  std::vector<Entry> dropped;
  for (auto entry = waiting_.begin(); entry != waiting_.end();) {
    entry->command.parts &= ~parts;
    if (!IsMotion(entry->command) || entry->command.parts.any()) {
      ++entry;
      continue;
    }
    dropped.push_back(std::move(*entry));
    entry = waiting_.erase(entry);
  }
  for (Entry& entry : dropped) Answer(&entry.command, Status::kDone);
}

CommandQueue::Entry* CommandQueue::FindUnanswered(std::uint64_t number) {
  const auto is_meant = [&](const Entry& entry) { return entry.number == number; };
  const auto waiting = std::find_if(waiting_.begin(), waiting_.end(), is_meant);
  if (waiting != waiting_.end()) return &*waiting;
  const auto sent = std::find_if(outstanding_.begin(), outstanding_.end(), is_meant);
  if (sent != outstanding_.end()) return &*sent;
  if (!stopping_) return nullptr;
  const auto stop = std::find_if(stopping_->waiting.begin(), stopping_->waiting.end(), is_meant);
  return stop == stopping_->waiting.end() ? nullptr : &*stop;
}

void CommandQueue::Expire(std::uint64_t number) {
  Entry* const late = FindUnanswered(number);
  if (late == nullptr) return;
  Command command;
  command.done = std::exchange(late->command.done, nullptr);
  waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(),
                                [&](const Entry& entry) { return entry.number == number; }),
                 waiting_.end());
  Answer(&command, Status::kOffline);
  SendWhatMayLeave();
}

// Motions keep their order; a setting may leave before a motion that still waits.
bool CommandQueue::MayLeave(std::size_t index) const {
  const Command& command = waiting_[index].command;
  if (!IsMotion(command)) return true;
  if (stopping_ && (stopping_->parts & command.parts).any()) return false;
  if (command.kind == Kind::kVelocity && timer_.Now() < next_velocity_) return false;
  return std::none_of(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(index),
                      [](const Entry& earlier) { return IsMotion(earlier.command); });
}

void CommandQueue::SendWhatMayLeave() {
  for (std::size_t index = 0; index < waiting_.size();) {
    if (outstanding_.size() >= pace_.outstanding) return;
    if (!MayLeave(index)) {
      ++index;
      continue;
    }
    Entry entry = std::move(waiting_[index]);
    waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(index));
    SendNow(std::move(entry));
    index = 0;
  }
  const nanoseconds left = next_velocity_ - timer_.Now();
  if (waiting_.empty() || left <= nanoseconds(0) || velocity_timer_runs_) return;
  velocity_timer_runs_ = true;
  timer_.RunIn(left, [this, there = std::weak_ptr<int>(there_)] {
    if (there.expired()) return;
    velocity_timer_runs_ = false;
    SendWhatMayLeave();
  });
}

void CommandQueue::SendNow(Entry entry) {
  if (entry.command.kind == Kind::kVelocity) next_velocity_ = timer_.Now() + pace_.spacing;
  const Send send = std::move(entry.command.send);
  const Parts parts = entry.command.parts;
  const std::uint64_t number = entry.number;
  outstanding_.push_back(std::move(entry));
  send(parts, WhileThere(&CommandQueue::TakeAnswer, number));
}

void CommandQueue::TakeAnswer(std::uint64_t number, Status status) {
  const auto found = std::find_if(outstanding_.begin(), outstanding_.end(),
                                  [&](const Entry& entry) { return entry.number == number; });
  if (found == outstanding_.end()) return;
  Entry entry = std::move(*found);
  outstanding_.erase(found);
  if (stopping_ && (stopping_->parts & entry.command.parts).any()) {
    stopping_->revision = ++revisions_;
    stopping_->confirmed = false;
    SendStop();
  }
  Answer(&entry.command, status);
  SendWhatMayLeave();
}

bool CommandQueue::IsOutstanding(const Parts& parts) const {
  return std::any_of(outstanding_.begin(), outstanding_.end(),
                     [&](const Entry& entry) { return (entry.command.parts & parts).any(); });
}

void CommandQueue::Stop(const Parts& parts, nanoseconds deadline, Send send, Done done) {
  DropMotions(parts);
  if (!stopping_) stopping_.emplace();
  stopping_->parts |= parts;
  stopping_->send = std::move(send);
  stopping_->revision = ++revisions_;
  stopping_->repetitions = 0;
  stopping_->confirmed = false;
  stopping_->waiting.push_back({++added_, {Kind::kSetting, parts, deadline, nullptr, std::move(done)}});
  ExpectAnswer(stopping_->waiting.back());
  SendStop();
}

void CommandQueue::CameraIsBack() {
  if (!stopping_ || stopping_->confirmed) return;
  stopping_->repetitions = 0;
  SendStop();
}

// For a second at the pace's interval, then ever less often.
nanoseconds CommandQueue::StopInterval() const {
  constexpr int kSlower[] = {1, 2, 4, 5};
  const auto quick = static_cast<int>(seconds(1) / std::max(pace_.stop_interval, nanoseconds(1)));
  const int slow = stopping_->repetitions - quick;
  return slow <= 0 ? pace_.stop_interval : nanoseconds(seconds(kSlower[std::min(slow, 4) - 1]));
}

void CommandQueue::SendStop() {
  const std::uint64_t transmission = ++stopping_->transmission;
  const std::uint64_t revision = stopping_->revision;
  ++stopping_->repetitions;
  timer_.RunIn(StopInterval(), [this, there = std::weak_ptr<int>(there_), transmission, revision] {
    if (there.expired() || !stopping_ || stopping_->confirmed) return;
    if (stopping_->transmission == transmission && stopping_->revision == revision) SendStop();
  });
  const bool last = !IsOutstanding(stopping_->parts);
  const Send send = stopping_->send;
  send(stopping_->parts, WhileThere(&CommandQueue::TakeStopAnswer, revision, last));
}

// `last`: no motion was outstanding that the camera may execute after this stop.
void CommandQueue::TakeStopAnswer(std::uint64_t revision, bool last, Status status) {
  if (!stopping_ || stopping_->revision != revision || status == Status::kOffline) return;
  stopping_->confirmed = true;
  auto waiting = std::exchange(stopping_->waiting, {});
  if (last) stopping_.reset();
  for (Entry& entry : waiting) Answer(&entry.command, status);
  SendWhatMayLeave();
}

}  // namespace vptzd
