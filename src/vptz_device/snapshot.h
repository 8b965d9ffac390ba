// All rows that the registry shows, read at once: each table by one statement,
// all in one transaction, grouped by owner in memory. The tables have no index
// on their owners, so looking rows up one by one takes a time that grows with
// the square of the number of devices.
#ifndef VPTZ_SRC_VPTZ_DEVICE_SNAPSHOT_H
#define VPTZ_SRC_VPTZ_DEVICE_SNAPSHOT_H

#include <algorithm>
#include <utility>

#include "vptz_device/row_source.h"

namespace odb::sqlite {
class connection;
}

namespace vptz {

// Rows in the order in which they were added, by owner.
template <class Row>
class RowsByOwner {
 public:
  struct Entry {
    std::uint32_t owner;
    Row row;
  };
  using Iterator = typename std::vector<Entry>::const_iterator;

  Row& Add(std::uint32_t owner) {
    entries_.emplace_back();
    entries_.back().owner = owner;
    return entries_.back().row;
  }

  // After the last Add, before the first Of.
  void Sort() {
    if (!std::is_sorted(entries_.begin(), entries_.end(), Less{})) {
      std::stable_sort(entries_.begin(), entries_.end(), Less{});
    }
  }

  // The rows of one owner.
  std::pair<Iterator, Iterator> Of(std::uint32_t owner) const {
    return std::equal_range(entries_.begin(), entries_.end(), owner, Less{});
  }

  // The first row of one owner; null when it has none.
  const Row* First(std::uint32_t owner) const {
    const auto range = Of(owner);
    return range.first == range.second ? nullptr : &range.first->row;
  }

 private:
  struct Less {
    bool operator()(const Entry& left, const Entry& right) const { return left.owner < right.owner; }
    bool operator()(const Entry& left, std::uint32_t right) const { return left.owner < right; }
    bool operator()(std::uint32_t left, const Entry& right) const { return left < right.owner; }
  };

  std::vector<Entry> entries_;
};

struct NamedParameterRow : ParameterRow {
  std::string name;
};

class Snapshot : public RowSource {
 public:
  // Waits for other programs' locks as every operation of the model does. Leaves
  // the snapshot empty when the database cannot be read, which is logged.
  void Read();

  // Of all devices, in the order of their rows.
  const std::vector<std::uint32_t>& DeviceIds() const { return tables_.device_ids; }

  int Device(std::uint32_t id, VptzDeviceData& record) const override;
  std::vector<MediaRow> Media(std::uint32_t device_id) const override;
  std::vector<PtzRow> Ptz(std::uint32_t device_id) const override;
  std::vector<VptzPresetData> Presets(std::uint32_t ptz_id) const override;
  std::optional<MovementRow> Movement(std::uint32_t id) const override;
  std::optional<ParameterRow> MediaParameter(std::uint32_t media_id, const char* name) const override;
  std::optional<ParameterRow> MovementParameter(std::uint32_t movement_id, const char* name) const override;
  int PresetCount(std::uint32_t ptz_id) const override;

 private:
  struct Tables {
    std::vector<std::uint32_t> device_ids;
    RowsByOwner<std::string> type_names;      // by their own ids, as are
    RowsByOwner<std::string> protocol_names;  // these,
    RowsByOwner<VptzDeviceData> devices;      // these
    RowsByOwner<MovementRow> movements;       // and these
    RowsByOwner<MediaRow> media;
    RowsByOwner<NamedParameterRow> media_parameters;
    RowsByOwner<PtzRow> ptz;
    RowsByOwner<NamedParameterRow> movement_parameters;
    RowsByOwner<VptzPresetData> presets;
  };

  static void ReadDevices(odb::sqlite::connection& connection, Tables& tables);
  static void ReadProfiles(odb::sqlite::connection& connection, Tables& tables);

  Tables tables_;
};

}  // namespace vptz

#endif
