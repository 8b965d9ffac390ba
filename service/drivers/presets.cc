#include "drivers/presets.h"

#include <algorithm>

namespace vptzd {

const StoredPosition* PresetList::Find(const std::string& token) const {
  const auto found = std::find_if(presets_.begin(), presets_.end(),
                                  [&](const StoredPosition& preset) { return preset.token == token; });
  return found == presets_.end() ? nullptr : &*found;
}

StoredPosition PresetList::Prepare(const std::string& token, const std::string& name,
                                   const std::array<double, 3>& position) const {
  if (const StoredPosition* old = Find(token)) return {old->id, token, name, position};
  const std::uint32_t id = FreeId();
  return {id, token.empty() ? "preset" + std::to_string(id) : token, name, position};
}

bool PresetList::HasRoomFor(const std::string& token) const {
  return presets_.size() < kMax || Find(token) != nullptr;
}

void PresetList::Store(const StoredPosition& preset) {
  Remove(preset.token);
  const auto behind = std::find_if(presets_.begin(), presets_.end(),
                                   [&](const StoredPosition& other) { return other.id > preset.id; });
  presets_.insert(behind, preset);
}

bool PresetList::Remove(const std::string& token) {
  const StoredPosition* preset = Find(token);
  if (preset == nullptr) return false;
  presets_.erase(presets_.begin() + (preset - presets_.data()));
  return true;
}

std::uint32_t PresetList::FreeId() const {
  std::uint32_t id = shift_ + 1;
  for (const StoredPosition& preset : presets_) {
    if (preset.id == id) ++id;
  }
  return id;
}

}  // namespace vptzd
