// Tells people on standard error what keeps the start waiting.
#ifndef VPTZ_SERVICE_APP_PROGRESS_H
#define VPTZ_SERVICE_APP_PROGRESS_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <ostream>
#include <thread>

namespace vptzd {

// Writes a line such as "vptzd: storing camera 12 of 64 ..." at the end of each
// period while it lives. A thread does so, since the one that starts the service
// may wait for the disk, or for another program's lock, anywhere.
class StartProgress {
 public:
  // `out` outlives it and is used by nobody else meanwhile.
  explicit StartProgress(std::ostream& out, std::chrono::milliseconds period = std::chrono::seconds(1));
  ~StartProgress();
  StartProgress(const StartProgress&) = delete;
  StartProgress& operator=(const StartProgress&) = delete;

  // What the lines tell from now on; before, that the database is being opened. From
  // any thread.
  void Reached(std::size_t camera, std::size_t of);

 private:
  void Run();

  std::ostream& out_;
  const std::chrono::milliseconds period_;
  std::mutex mutex_;
  std::condition_variable ended_changed_;
  bool ended_ = false;
  std::size_t camera_ = 0;  // 0: the database is being opened
  std::size_t of_ = 0;
  std::thread thread_;
};

}  // namespace vptzd

#endif
