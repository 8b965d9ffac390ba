// The stored positions of a camera.
#ifndef VPTZ_SERVICE_DRIVERS_PRESETS_H
#define VPTZ_SERVICE_DRIVERS_PRESETS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vptzd {

struct StoredPosition {
  std::uint32_t id = 0;  // the preset's number at the camera
  std::string token;     // the preset's name at the camera
  std::string name;      // for people
  std::array<double, 3> position{};
};

class PresetList {
 public:
  static constexpr std::size_t kMax = 256;

  // `shift` is added to the numbers of new presets, which else begin with 1.
  explicit PresetList(std::uint32_t shift = 0) : shift_(shift) {}

  const std::vector<StoredPosition>& all() const { return presets_; }

  // Null when there is none with that token.
  const StoredPosition* Find(const std::string& token) const;

  // What Store would store: the preset with that token with a new name and
  // position, or a new one with the lowest free number. An empty token means a
  // new preset, whose token is made from its number.
  StoredPosition Prepare(const std::string& token, const std::string& name,
                         const std::array<double, 3>& position) const;
  bool HasRoomFor(const std::string& token) const;

  // Adds a preset, or replaces the one with its token.
  void Store(const StoredPosition& preset);

  // False when there is none with that token.
  bool Remove(const std::string& token);

  void Clear() { presets_.clear(); }

 private:
  std::uint32_t FreeId() const;

  std::uint32_t shift_;
  std::vector<StoredPosition> presets_;  // by number
};

}  // namespace vptzd

#endif
