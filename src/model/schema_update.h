// Brings a file to the current version of a schema. Parts of
// VptzModel::Initialize: they log under its name and throw what goes wrong.
#ifndef VPTZ_SRC_MODEL_SCHEMA_UPDATE_H
#define VPTZ_SRC_MODEL_SCHEMA_UPDATE_H

#include <string>

#include "model/open_database.h"

namespace vptz {

inline constexpr char kInitialize[] = "Initialize";

// Whether a file of this version holds nothing worth keeping.
bool IsWorthless(int version);

// Throws when the file records no version for the schema that can be read; other
// schemas may have versions there too.
void RequireReadableVersion(OpenDatabase& database, const std::string& schema);

// Creates the schema in a file of version 0, else runs the missing steps. When it
// throws, a connection of the database may be left that checks no references: use
// the database no more.
void UpdateSchema(OpenDatabase& database, const std::string& schema, int version);

}  // namespace vptz

#endif
