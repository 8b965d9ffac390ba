// A socket that threads read in turns, one at a time.
//
// While no caller waits for an answer, the background thread reads the socket. A
// caller that waits takes the turn and reads until it has its answer, which saves
// a hand-over between threads for each call. Further callers queue: they sleep
// until the reading one has read their answer, and when it leaves, the first that
// still waits gets the turn. So a slow call holds up no other.
//
// The last caller to leave keeps the socket for a moment: the next call of a burst
// takes the turn without asking the kernel to watch the socket and to stop
// watching it. A timer ends the moment, so the background thread reads what comes
// meanwhile a millisecond late, not later. At any time one of these holds: a
// caller has the turn, the background thread watches the socket, or the timer
// runs.
#ifndef DORV_BUS_SHARED_SOCKET_H
#define DORV_BUS_SHARED_SOCKET_H

#include <cstdint>
#include <mutex>

#include "event.h"
#include "socket_watch.h"
#include "waiter.h"

namespace dorv {

class SharedSocket {
 public:
  // What is read from the socket and written to it. Called with the mutex held.
  class Stream {
   public:
    virtual ~Stream() = default;

    // Negative when the socket was closed because of an error.
    virtual int descriptor() const = 0;
    // Whether something could not be written yet.
    virtual bool WantsToWrite() const = 0;
    // Reads what has come and writes what could not be written before. Must not
    // block; finishes the waiters whose answers it has read.
    virtual void ReadAndWrite() = 0;
  };

  explicit SharedSocket(Stream* stream) : stream_(stream) {}

  bool valid() const { return watch_.valid() && wake_reader_.valid(); }

  // All of the following need the mutex held.

  // The stream has a socket, which the background thread is to read.
  void Open();

  // From now on callers may read the socket.
  void AdmitCallers() { callers_admitted_ = true; }

  // The stream has no socket any more.
  void Close();

  // The waiter takes the turn if no other caller has it. It does so before it
  // sends, so that the answer does not wake the background thread. Await or
  // LeaveTurn follows.
  void TakeTurn(Waiter& waiter);

  // The waiter gives the turn back, if it has it.
  void LeaveTurn(Waiter& waiter);

  // Waits until the waiter is finished or its deadline has come, and reads the
  // socket meanwhile if no other caller does. Returns the waiter's result. Needs
  // no memory, since a waiter has something under way.
  int Await(std::unique_lock<std::mutex>& lock, Waiter& waiter);

  // Has the thread that reads the socket write, when there is room, what was sent
  // and did not fit.
  void KeepWriting();

  // For the background thread.

  // Whether there is a socket that no caller reads.
  bool IsLeftToBackground() const { return open_ && !taken_; }
  bool Sleep(std::unique_lock<std::mutex>& lock, TimePoint until) { return watch_.Sleep(lock, until); }
  // Sleep returns when there is something to read, or to write.
  void WatchInBackground();
  void ForgetClosed();

  // Ends the background thread's sleep.
  void WakeBackground() { watch_.Wake(); }
  // Set by WakeBackground, for a background thread that sleeps elsewhere.
  const Event& background_wake() const { return watch_.wake(); }
  void ClearBackgroundWake() { watch_.ClearWake(); }

 private:
  void ReadUntilDone(std::unique_lock<std::mutex>& lock, Waiter& waiter);
  void Enqueue(Waiter& waiter);
  void Dequeue(Waiter& waiter);
  unsigned WantedEvents() const;

  Stream* const stream_;
  SocketWatch watch_;
  Event wake_reader_;
  std::uint64_t closed_ = 0;  // how many sockets have been closed
  bool open_ = false;
  bool callers_admitted_ = false;
  bool taken_ = false;       // a caller has the turn
  Waiter* queue_ = nullptr;  // the callers that wait for their answer without the turn
};

}  // namespace dorv

#endif
