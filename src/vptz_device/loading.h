// Fills a handle from a source of rows; vptz_device.h tells what each loader
// does.
#ifndef VPTZ_SRC_VPTZ_DEVICE_LOADING_H
#define VPTZ_SRC_VPTZ_DEVICE_LOADING_H

#include <vptz/vptz_device.h>

#include "time_budget.h"
#include "vptz_device/row_source.h"

namespace vptz {

// `budget` is what the queries for outside addresses may take; an address that is
// not asked for any more counts as one whose query failed.
int LoadDeviceInfo(CVptzDevice& device, const RowSource& rows, TimeBudget& budget);
int LoadPtzInfo(CVptzDevice& device, const RowSource& rows);
int LoadMediaInfo(CVptzDevice& device, const RowSource& rows, TimeBudget& budget);

}  // namespace vptz

#endif
