#ifndef VPTZ_MODEL_STORED_H
#define VPTZ_MODEL_STORED_H

#include <vector>

#include <vptz/export.h>

namespace vptz {

// What every row class with an id offers. Each operation is one transaction on
// the open database and waits for other programs' locks for about four
// seconds. -1 when it fails or when no database is open, which is logged.
// May be called from any thread at any time; an object is for one thread at a time.
template <class Row>
class VPTZ_API StoredRow {
 public:
  // Inserts the row and gives it its id. The id, or -1.
  static int Add(Row* row);

  // Deletes the row with that id. 0, or -1 also when there is none.
  static int Remove(unsigned int id);

  // Loads the row with that id into a new object that the caller deletes; an
  // object that *row points at is deleted first. 0, or -1 and null.
  static int QueryById(Row** row, unsigned int id);

  // Appends every row, as new objects of the caller's, who frees them with
  // VptzModel::CleanQuery. The last two arguments are accepted and ignored. 0,
  // or -1 when the vector is empty afterwards.
  static int QueryAll(std::vector<Row*>* rows, unsigned int first, unsigned int count);
};

// A row that can be written back.
template <class Row>
class VPTZ_API UpdatableRow : public StoredRow<Row> {
 public:
  // Writes all members into the row with the object's id. 0, or -1 also when
  // there is no such row.
  static int Update(const Row& row);
};

}  // namespace vptz

#endif
