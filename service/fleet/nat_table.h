// Which addresses can be reached from outside, and under which ports.
#ifndef VPTZ_SERVICE_FLEET_NAT_TABLE_H
#define VPTZ_SERVICE_FLEET_NAT_TABLE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace vptzd {

// What a mapping is for, numbered as in commands.
enum class NatKind : std::int32_t { kAll = 0, kMedia = 1, kService = 2, kHttp = 3 };

class NatTable {
 public:
  // An address that is kept for documentation: nobody is there.
  static constexpr const char* kOutsideHost = "203.0.113.1";
  static constexpr int kFirstPort = 40000;
  static constexpr int kLastPort = 65535;

  struct Mapping {
    std::string host;
    int port;
  };
  // A device's row id and what of it.
  using Key = std::pair<std::uint32_t, NatKind>;

  // Null when the mapping is not open.
  const Mapping* Find(const Key& key) const;

  // Whether a port is free, or belongs to that mapping already.
  bool IsFree(int port, const Key& key) const;

  // Opens a mapping, or changes it. An empty host means kOutsideHost, the port 0
  // the port that it has, else a free one. False when none is free.
  bool Open(const Key& key, const std::string& host, int port);

  void Close(const Key& key) { mappings_.erase(key); }
  void CloseAllOf(std::uint32_t device);
  void Clear() { mappings_.clear(); }

 private:
  int FreePort(const Key& key) const;

  std::map<Key, Mapping> mappings_;
};

}  // namespace vptzd

#endif
