#include "support/passwords.h"

#include <sys/stat.h>

#include <fstream>
#include <stdexcept>

#include "support/process.h"

namespace vptz_test {

void WritePasswords(const std::string& path, const std::map<std::string, std::string>& passwords) {
  std::ofstream file(path);
  chmod(path.c_str(), 0600);
  for (const auto& [user, password] : passwords) file << user << ':' << password << '\n';
  file.close();
  if (passwords.empty()) return;
  const RunResult hashed = Run({VPTZ_MOSQUITTO_PASSWD, "-U", path});
  if (hashed.exit_code != 0) throw std::runtime_error("no file of passwords: " + hashed.errors);
}

}  // namespace vptz_test
