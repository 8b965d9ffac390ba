#include "model/file_layer.h"

#include <atomic>
#include <new>

namespace vptz {
namespace {

std::string NewName() {
  static std::atomic<unsigned> number{0};
  return "vptz-" + std::to_string(++number);
}

sqlite3_vfs& Default() {
  sqlite3_vfs* const found = sqlite3_vfs_find(nullptr);
  if (found == nullptr) throw std::bad_alloc();  // SQLite could not start
  return *found;
}

// Calls the default layer's method with the default layer: it may know more about
// itself than what a copy would hold.
template <auto Method>
struct Forward;

template <class Result, class... Arguments, Result (*sqlite3_vfs::*Method)(sqlite3_vfs*, Arguments...)>
struct Forward<Method> {
  static Result Call(sqlite3_vfs* layer, Arguments... arguments) {
    auto* const target = static_cast<sqlite3_vfs*>(layer->pAppData);
    return (target->*Method)(target, arguments...);
  }
};

template <auto... Methods>
void ForwardAll(const sqlite3_vfs& target, sqlite3_vfs& layer) {
  ((layer.*Methods = target.*Methods == nullptr ? nullptr : &Forward<Methods>::Call), ...);
}

void ForwardMethods(const sqlite3_vfs& target, sqlite3_vfs& layer) {
  using Vfs = sqlite3_vfs;
  ForwardAll<&Vfs::xOpen, &Vfs::xDelete, &Vfs::xAccess, &Vfs::xFullPathname, &Vfs::xDlOpen, &Vfs::xDlError,
             &Vfs::xDlSym, &Vfs::xDlClose, &Vfs::xRandomness, &Vfs::xSleep, &Vfs::xCurrentTime,
             &Vfs::xGetLastError>(target, layer);
  if (target.iVersion >= 2) ForwardAll<&Vfs::xCurrentTimeInt64>(target, layer);
  if (target.iVersion >= 3) {
    ForwardAll<&Vfs::xSetSystemCall, &Vfs::xGetSystemCall, &Vfs::xNextSystemCall>(target, layer);
  }
}

}  // namespace

FileLayer::FileLayer() : name_(NewName()) {
  sqlite3_vfs& target = Default();
  layer_.iVersion = target.iVersion;
  layer_.szOsFile = target.szOsFile;
  layer_.mxPathname = target.mxPathname;
  layer_.zName = name_.c_str();
  layer_.pAppData = &target;
  ForwardMethods(target, layer_);
  if (sqlite3_vfs_register(&layer_, 0) != SQLITE_OK) throw std::bad_alloc();
}

FileLayer::~FileLayer() { sqlite3_vfs_unregister(&layer_); }

}  // namespace vptz
