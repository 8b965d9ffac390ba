// Fills a handle from a source of rows; vptz_device.h tells what each loader
// does.
#ifndef VPTZ_SRC_VPTZ_DEVICE_LOADING_H
#define VPTZ_SRC_VPTZ_DEVICE_LOADING_H

#include <vptz/vptz_device.h>

#include "vptz_device/row_source.h"

namespace vptz {

int LoadDeviceInfo(CVptzDevice& device, const RowSource& rows);
int LoadPtzInfo(CVptzDevice& device, const RowSource& rows);
int LoadMediaInfo(CVptzDevice& device, const RowSource& rows);

}  // namespace vptz

#endif
