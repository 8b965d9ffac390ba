// Keeps a client or a service connected to the broker: a background thread begins
// one session after the other for as long as the application wants it.
#ifndef DORV_BUS_CONNECTION_H
#define DORV_BUS_CONNECTION_H

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "log_writer.h"
#include "session.h"
#include "shared_socket.h"
#include "trouble.h"
#include "waiter.h"

namespace dorv {

// One mutex guards everything in it, libmosquitto included. A thread holds it
// around calls of libmosquitto, never while it sleeps or a callback of the
// application runs.
class Connection final : Session::Keeper {
 public:
  // What a client or a service adds to a connection.
  class Owner : public Session::User {
   public:
    // With the mutex held, on the background thread: ends the calls that have run
    // out of time; returns when to be called next.
    virtual TimePoint EndOverdueCalls(TimePoint now) = 0;

    // Without the mutex, on the background thread, after it has read.
    virtual void HandleRequests() {}
  };

  Connection(Owner* owner, std::string client_id);
  ~Connection() override = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Whether construction went well; nothing else works without.
  bool valid() const { return session_.valid() && socket_.valid(); }

  std::mutex& mutex() { return mutex_; }
  // The following three need the mutex held.
  Session& session() { return session_; }
  SharedSocket& socket() { return socket_; }
  // For lines that come up while the mutex is held.
  LogWriter& log() { return log_; }

  // Connects to the address, with the settings as they are now, and stays
  // connected. `keep` keeps the owner alive for as long as the background thread
  // runs. Results of bus_connect.
  int Connect(const char* address, std::shared_ptr<void> keep);

  // Leaves the broker and no longer tries. Results of bus_disconnect.
  int Disconnect();

  // With the mutex held: subscribes, without kept messages, and waits until the
  // broker has confirmed it. 0 or a negative errno value.
  int SubscribeAndWait(std::unique_lock<std::mutex>& lock, const char* topic, int qos, int identifier,
                       TimePoint deadline);

  // Ends everything. Waits for the background thread, but at most one second: it
  // may be looking up a host name, and ends later then.
  void Close();

  // Whether the calling thread is this connection's background thread.
  bool OnBackgroundThread() const;

 private:
  // Session::Keeper
  void SessionReady() override;
  void SessionFailed(int error) override;

  // All with the mutex held.
  void StartBackgroundThread(std::shared_ptr<void> keep);
  int ConnectTo(std::unique_lock<std::mutex>& lock, std::shared_ptr<const Target> target);
  int Leave();

  // The background thread.
  void Run();
  void RunRound(std::unique_lock<std::mutex>& lock);
  bool MustDial() const { return wanted_ && !session_.open(); }
  void Dial(std::unique_lock<std::mutex>& lock);

  Owner* const owner_;
  std::mutex mutex_;
  LogWriter log_;
  Trouble trouble_;
  SharedSocket socket_;
  Session session_;
  std::thread thread_;
  std::condition_variable thread_ended_;
  bool running_ = false;  // the thread
  bool closing_ = false;

  std::shared_ptr<const Target> target_;
  bool wanted_ = false;        // the application wants to be connected to the target
  std::uint64_t attempt_ = 0;  // counts Connect and Disconnect, which make an attempt that runs pointless
  TimePoint retry_at_{};
  EventWaiters connecting_;  // all for kConnected
  static constexpr int kConnected = 0;
};

}  // namespace dorv

#endif
