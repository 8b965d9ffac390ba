// Where a handle's loading gets its rows from: from the database, row by row,
// or from a registry snapshot. Both give the same values in the same order.
#ifndef VPTZ_SRC_VPTZ_DEVICE_ROW_SOURCE_H
#define VPTZ_SRC_VPTZ_DEVICE_ROW_SOURCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <vptz/vptz_data.h>

namespace vptz {

// A row of "media_parameter" or "movement_parameter". NULL is NaN.
struct ParameterRow {
  double value;
  double min;
  double max;
};

struct MediaRow {
  std::uint32_t id;
  std::string node;
  std::string url;
  bool is_enable;
};

struct MovementRow {
  bool have_absolute_move;
  bool have_continues_move;
  bool have_relative_move;
};

struct PtzRow {
  std::uint32_t id;
  std::string node;
  bool is_enable;
  int track_mode;
  std::uint32_t pan;  // the axes' movements; 0 is none
  std::uint32_t tilt;
  std::uint32_t zoom;
};

class RowSource {
 public:
  RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;
  virtual ~RowSource() = default;

  // Copies the row into the record, which keeps its outside addresses. 0, or -1
  // when there is none; the record is then as it was.
  virtual int Device(std::uint32_t id, VptzDeviceData& record) const = 0;

  // Lists are in the order of the rows.
  virtual std::vector<MediaRow> Media(std::uint32_t device_id) const = 0;
  virtual std::vector<PtzRow> Ptz(std::uint32_t device_id) const = 0;
  virtual std::vector<VptzPresetData> Presets(std::uint32_t ptz_id) const = 0;

  virtual std::optional<MovementRow> Movement(std::uint32_t id) const = 0;

  // The first row of that owner and name.
  virtual std::optional<ParameterRow> MediaParameter(std::uint32_t media_id, const char* name) const = 0;
  virtual std::optional<ParameterRow> MovementParameter(std::uint32_t movement_id, const char* name) const = 0;

  // What VptzClient::QueryPresetCountByPtz gives.
  virtual int PresetCount(std::uint32_t ptz_id) const = 0;
};

}  // namespace vptz

#endif
