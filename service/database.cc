#include "database.h"

#include <vptz/model/vptzmodel.h>

namespace vptzd {

bool OpenDatabase(const std::string& path, const std::string& seed_file) {
  return VptzModel::Instance().Initialize(path, "vptz", seed_file) == 0;
}

}  // namespace vptzd
