// The rows as the entity classes give them, each query a transaction.
#ifndef VPTZ_SRC_VPTZ_DEVICE_DATABASE_ROWS_H
#define VPTZ_SRC_VPTZ_DEVICE_DATABASE_ROWS_H

#include "vptz_device/row_source.h"

namespace vptz {

class DatabaseRows : public RowSource {
 public:
  int Device(std::uint32_t id, VptzDeviceData& record) const override;
  std::vector<MediaRow> Media(std::uint32_t device_id) const override;
  std::vector<PtzRow> Ptz(std::uint32_t device_id) const override;
  std::vector<VptzPresetData> Presets(std::uint32_t ptz_id) const override;
  std::optional<MovementRow> Movement(std::uint32_t id) const override;
  std::optional<ParameterRow> MediaParameter(std::uint32_t media_id, const char* name) const override;
  std::optional<ParameterRow> MovementParameter(std::uint32_t movement_id, const char* name) const override;
  int PresetCount(std::uint32_t ptz_id) const override;
};

}  // namespace vptz

#endif
