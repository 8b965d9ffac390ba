#include "targets.h"

#include <fcntl.h>
#include <paths.h>
#include <poll.h>
#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "call_guard.h"

namespace zerk {
namespace {

constexpr int kPatienceMilliseconds = 1000;

// Common system log daemons cut messages at 8 KiB, their own header included.
constexpr std::size_t kSyslogPiece = 8000;

// Waits until a full non-blocking descriptor takes more.
bool WaitForRoom(int descriptor) {
  pollfd wanted = {descriptor, POLLOUT, 0};
  return poll(&wanted, 1, kPatienceMilliseconds) > 0;
}

bool MayTryAgain(int descriptor, int error) {
  return error == EINTR || ((error == EAGAIN || error == EWOULDBLOCK) && WaitForRoom(descriptor));
}

int SyslogPriority(spdlog::level::level_enum level) {
  switch (level) {
    case spdlog::level::err:
      return LOG_ERR;
    case spdlog::level::warn:
      return LOG_WARNING;
    case spdlog::level::info:
      return LOG_NOTICE;
    default:
      return LOG_DEBUG;
  }
}

// How much of `text` makes a piece that ends with a whole UTF-8 character.
std::size_t PieceLength(const char* text, std::size_t length) {
  if (length <= kSyslogPiece) {
    return length;
  }
  std::size_t end = kSyslogPiece;
  while (end > kSyslogPiece - 4 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) {
    --end;
  }
  return end;
}

}  // namespace

bool LockSoon(std::mutex& mutex) {
  using std::chrono::steady_clock;
  const steady_clock::time_point end = steady_clock::now() + std::chrono::milliseconds(250);
  while (!mutex.try_lock()) {
    if (steady_clock::now() >= end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return true;
}

DescriptorTarget::DescriptorTarget(int descriptor, std::string name)
    : descriptor_(descriptor), name_(std::move(name)) {}

void DescriptorTarget::sink_it_(const spdlog::details::log_msg& message) {
  spdlog::memory_buf_t line;
  if (torn_) {
    line.push_back('\n');
  }
  formatter_->format(message, line);
  if (Write(line.data(), line.size())) {
    torn_ = false;
    complained_ = false;
  } else {
    ComplainOnce(errno);
  }
}

bool DescriptorTarget::Write(const char* text, std::size_t length) {
  std::size_t done = 0;
  while (done < length) {
    const ssize_t written = write(descriptor_, text + done, length - done);
    if (written >= 0) {
      done += static_cast<std::size_t>(written);
    } else if (!MayTryAgain(descriptor_, errno)) {
      torn_ = torn_ || done > 0;
      return false;
    }
  }
  return true;
}

void DescriptorTarget::ComplainOnce(int error) {
  if (!complained_ && descriptor_ != STDERR_FILENO) {
    Complain(name_.c_str(), std::strerror(error));
  }
  complained_ = true;
}

void SyslogTarget::sink_it_(const spdlog::details::log_msg& message) {
  const int priority = SyslogPriority(message.level);
  const char* text = message.payload.data();
  std::size_t left = message.payload.size();
  const char* mark = "";
  while (left > 0) {
    const std::size_t length = PieceLength(text, left);
    syslog(priority, "%s%.*s", mark, static_cast<int>(length), text);
    text += length;
    left -= length;
    mark = "... ";
  }
}

int OpenLogFile(const std::string& path) {
  const int descriptor =
      open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640);
  if (descriptor >= 0) {
    fcntl(descriptor, F_SETFL, O_APPEND);
  }
  return descriptor;
}

bool HaveSyslog() { return access(_PATH_LOG, W_OK) == 0; }

void Complain(const char* what, const char* why) {
  const CallGuard guard;
  const char* parts[] = {"zerklog: ", what, ": ", why, "\n"};
  iovec pieces[std::size(parts)];
  std::transform(std::begin(parts), std::end(parts), std::begin(pieces), [](const char* part) {
    return iovec{const_cast<char*>(part), std::strlen(part)};
  });
  // Nobody is left to tell when this fails.
  static_cast<void>(!writev(STDERR_FILENO, pieces, static_cast<int>(std::size(pieces))));
}

}  // namespace zerk
