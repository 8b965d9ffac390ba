#include "fleet/nat_table.h"

#include <algorithm>

namespace vptzd {

const NatTable::Mapping* NatTable::Find(const Key& key) const {
  const auto found = mappings_.find(key);
  return found == mappings_.end() ? nullptr : &found->second;
}

bool NatTable::IsFree(int port, const Key& key) const {
  return std::none_of(mappings_.begin(), mappings_.end(),
                      [&](const auto& open) { return open.second.port == port && open.first != key; });
}

int NatTable::FreePort(const Key& key) const {
  if (const Mapping* open = Find(key)) return open->port;
  int port = kFirstPort;
  while (port <= kLastPort && !IsFree(port, key)) ++port;
  return port <= kLastPort ? port : 0;
}

bool NatTable::Open(const Key& key, const std::string& host, int port) {
  if (port == 0) port = FreePort(key);
  if (port == 0) return false;
  mappings_[key] = {host.empty() ? kOutsideHost : host, port};
  return true;
}

void NatTable::CloseAllOf(std::uint32_t device) {
  for (const NatKind kind : {NatKind::kMedia, NatKind::kService, NatKind::kHttp}) Close({device, kind});
}

}  // namespace vptzd
