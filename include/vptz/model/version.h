#ifndef VPTZ_MODEL_VERSION_H
#define VPTZ_MODEL_VERSION_H

#include <vptz/model/odb.h>

// The schema's version. A change of the classes needs a new one; the mapper then
// adds a change set to the change log.
PRAGMA_DB(model version(1, 10))

#endif
