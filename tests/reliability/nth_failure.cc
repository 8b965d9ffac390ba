// The program's own definitions come before the C library's for every library
// that the program is linked with.
#include "reliability/nth_failure.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>

namespace vptz_test {
namespace {

std::atomic<int> kind{-1};
std::atomic<int> left{0};

// Whether this event is the one that fails.
bool Fails(FailureKind of) { return kind == static_cast<int>(of) && left > 0 && --left == 0; }

bool OpenFails() {
  if (!Fails(FailureKind::kOpen)) return false;
  errno = EMFILE;
  return true;
}

bool SyncFails() {
  if (!Fails(FailureKind::kSync)) return false;
  errno = EIO;
  return true;
}

bool WriteFails(int descriptor) {
  if (kind != static_cast<int>(FailureKind::kWrite)) return false;
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !(S_ISREG(status.st_mode) || S_ISSOCK(status.st_mode))) return false;
  if (!Fails(FailureKind::kWrite)) return false;
  errno = S_ISREG(status.st_mode) ? ENOSPC : EIO;
  return true;
}

// The definition that this one stands before.
template <class Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template <auto& function, class... Arguments>
auto Write(const char* name, int descriptor, Arguments... arguments) {
  static const auto next = Next(&function, name);
  using Result = decltype(next(descriptor, arguments...));
  return WriteFails(descriptor) ? Result{-1} : next(descriptor, arguments...);
}

}  // namespace

NthFailure::NthFailure(FailureKind of, int n) {
  left = n;
  kind = static_cast<int>(of);
}

NthFailure::~NthFailure() { kind = -1; }

bool NthFailure::Happened() const { return left <= 0; }

}  // namespace vptz_test

using vptz_test::Next;
using vptz_test::OpenFails;
using vptz_test::SyncFails;
using vptz_test::Write;

extern "C" {

ssize_t write(int descriptor, const void* bytes, size_t size) {
  return Write<write>("write", descriptor, bytes, size);
}

ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  return Write<pwrite>("pwrite", descriptor, bytes, size, offset);
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t size, off64_t offset) {
  return Write<pwrite64>("pwrite64", descriptor, bytes, size, offset);
}

ssize_t writev(int descriptor, const iovec* pieces, int count) {
  return Write<writev>("writev", descriptor, pieces, count);
}

ssize_t pwritev(int descriptor, const iovec* pieces, int count, off_t offset) {
  return Write<pwritev>("pwritev", descriptor, pieces, count, offset);
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  return Write<send>("send", descriptor, bytes, size, flags);
}

int ftruncate64(int descriptor, off64_t size) noexcept {
  return Write<ftruncate64>("ftruncate64", descriptor, size);
}

int fsync(int descriptor) {
  static const auto next = Next(&fsync, "fsync");
  return SyncFails() ? -1 : next(descriptor);
}

int fdatasync(int descriptor) {
  static const auto next = Next(&fdatasync, "fdatasync");
  return SyncFails() ? -1 : next(descriptor);
}

// The mode is there only when a file may be made; to read it always is what the
// C library does as well.
#define VPTZ_OPEN(name, parameters, ...)               \
  int name parameters {                                \
    static const auto next = Next(&name, #name);       \
    va_list arguments;                                 \
    va_start(arguments, flags);                        \
    const mode_t mode = va_arg(arguments, unsigned);   \
    va_end(arguments);                                 \
    return OpenFails() ? -1 : next(__VA_ARGS__, mode); \
  }
VPTZ_OPEN(open, (const char* path, int flags, ...), path, flags)
VPTZ_OPEN(open64, (const char* path, int flags, ...), path, flags)
VPTZ_OPEN(openat, (int folder, const char* path, int flags, ...), folder, path, flags)
VPTZ_OPEN(openat64, (int folder, const char* path, int flags, ...), folder, path, flags)

int creat(const char* path, mode_t mode) {
  static const auto next = Next(&creat, "creat");
  return OpenFails() ? -1 : next(path, mode);
}

int socket(int family, int type, int protocol) noexcept {
  static const auto next = Next(&socket, "socket");
  return OpenFails() ? -1 : next(family, type, protocol);
}

int eventfd(unsigned count, int flags) noexcept {
  static const auto next = Next(&eventfd, "eventfd");
  return OpenFails() ? -1 : next(count, flags);
}

int epoll_create1(int flags) noexcept {
  static const auto next = Next(&epoll_create1, "epoll_create1");
  return OpenFails() ? -1 : next(flags);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// What the C library's own definitions are called: dlsym may allocate.
void* __libc_malloc(size_t size);                // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(size_t count, size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, size_t size);  // NOLINT(bugprone-reserved-identifier)

static bool AllocationFails() {
  if (!vptz_test::Fails(vptz_test::FailureKind::kAllocation)) return false;
  errno = ENOMEM;
  return true;
}

void* malloc(size_t size) { return AllocationFails() ? nullptr : __libc_malloc(size); }

void* calloc(size_t count, size_t size) { return AllocationFails() ? nullptr : __libc_calloc(count, size); }

void* realloc(void* block, size_t size) { return AllocationFails() ? nullptr : __libc_realloc(block, size); }

#endif
}
