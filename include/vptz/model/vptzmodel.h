#ifndef VPTZ_MODEL_VPTZMODEL_H
#define VPTZ_MODEL_VPTZMODEL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <vptz/model/odb.h>

#include <odb/database.hxx>
#include <odb/query.hxx>
#include <odb/result.hxx>
#include <odb/sqlite/query.hxx>
#include <odb/traits.hxx>

#include <vptz/export.h>

namespace vptz {

struct ModelAccess;
class OpenDatabase;

// What an operation writes to the log when it gives up.
struct OperationMessages {
  const char* function;     // where the line comes from
  const char* retry_limit;  // printf format with one text, when the tries are used up; null: never tried again
  const char* exception;    // printf format with one text, when something was thrown
};

}  // namespace vptz

// The process's one open database, and the operations on the rows in it.
//
// Threads. Everything here may be called from any thread at any time. Opening and
// closing (Connect, Initialize, Release) wait for each other. An operation keeps
// the database that is open when it begins, until it ends: to open another one, or
// the same file anew, costs no other thread an operation. One that begins while
// no database is open fails.
//
// Operations. Each is a transaction on a connection of its own; when another
// program holds a lock it is tried again, 402 times in all with 10 ms between,
// about four seconds. What goes wrong is logged and told by the result; of
// exceptions only std::bad_alloc leaves them.
//
// fork(). In a child no database is open, whatever the parent has open, until the
// child opens one. Fork while no other thread is in the middle of an operation:
// SQLite would take that operation's locks for the child's.
class VPTZ_API VptzModel {
 public:
  // The process's one instance. Clients share it: destroying a VptzClient
  // closes the database for all.
  static VptzModel& Instance();

  VptzModel(const VptzModel&) = delete;
  VptzModel& operator=(const VptzModel&) = delete;

  // Opens an existing database file in place of the one that was open: until it
  // is open, operations find the former. 0, or -1 when it is missing or cannot be
  // opened; then none is open.
  int Connect(const std::string& path);

  // Opens or creates a database file, brings it to the current version of
  // `schema` ("vptz"), and runs the SQL script `data_file`, unless that is empty,
  // with ExecuteFromFile. A file of version 0 to 3 is replaced by a new one; a
  // newer file than this library knows is used as it is. The script runs every
  // time. 0, or -1; the database may be open even then.
  //
  // Until the schema is current, operations find the database that was open; none
  // while that very file is replaced. A lock that one of them holds in the same file is in
  // the way as another program's would be.
  int Initialize(const std::string& path, const std::string& schema, const std::string& data_file);

  // Runs an SQL script against the open file with the sqlite3 program, which
  // must be on the search path. No shell is involved. 0, or -1.
  int ExecuteFromFile(const std::string& script);

  // Closes the database, as soon as the operations that use it have ended: it does
  // not wait for them.
  void Release();

  // Whether a database is open.
  bool IsConnected() const;

  // The version that the open file records for `schema`; 0 when none, -1 when no
  // database is open or the file cannot be read: it is locked, say, or no database.
  int SchemaVersion(const std::string& schema);

  // Inserts an object and gives it its id. The id (0 for a Setting), or -1, and
  // the object keeps the id that it had.
  template <class T>
  static int Add(T* object);

  // Inserts `count` objects that lie one behind the other in one transaction,
  // all or none, without trying again. 0, or -1, and the objects keep the ids that
  // they had.
  template <class T>
  static int AddAll(T* objects, int count);

  // Writes an object's members to its row. 0, or -1.
  template <class T>
  static int Update(const T& object);

  // Deletes the rows that match. 0, or -1 also when none did.
  template <class T>
  static int Erase(const odb::query<T>& query);

  // Loads the first matching row into a new object of the caller's. An object
  // that *result points at is deleted first. 0, or -1 and null.
  template <class T>
  static int QueryObject(const odb::query<T>& query, T** result);

  // Appends the matching rows as new objects of the caller's. 0 when the vector
  // is not empty afterwards, else -1. On failure every object in the vector is
  // deleted, those that were there before included.
  template <class T>
  static int QueryObjects(const odb::query<T>& query, std::vector<T*>* results);

  // The object behind a reference, loaded if need be; it belongs to the
  // reference. Null when there is none or it cannot be loaded. Objects may outlive
  // the database that they were read from: a reference is loaded from the one that
  // is open then.
  template <class T>
  static T* LoadLazyPtr(odb::lazy_shared_ptr<T>& reference);

  // Deletes the objects and empties the vector.
  template <class T>
  static void CleanQuery(std::vector<T*>* objects);

 private:
  friend struct vptz::ModelAccess;

  using Operation = std::function<bool(odb::database&)>;

  // Runs an operation in a transaction, again and again on a conflict. Whether
  // it was committed and what it returned.
  static bool Retry(const vptz::OperationMessages& messages, const Operation& operation);
  static bool Once(const vptz::OperationMessages& messages, const Operation& operation);
  VPTZ_HIDDEN static bool RunInTransaction(vptz::OpenDatabase* database, const Operation& operation);
  static void LogEmptyResult();
  static const vptz::OperationMessages& QueryObjectsMessages();

  static int ResultFromId(const std::string&) { return 0; }
  static int ResultFromId(unsigned int id) { return static_cast<int>(id); }

  template <class T>
  static std::unique_ptr<T> NewFrom(typename odb::result<T>::iterator& row);

  // The first row as a new object; null when there is none.
  template <class T>
  static std::unique_ptr<T> FirstOf(odb::result<T> rows);

  // QueryObject and QueryObjects, whatever way the mapper is asked for the object
  // or for the rows.
  template <class T, class FindObject>
  static int QueryObjectBy(const FindObject& find, T** result);
  template <class T, class FindRows>
  static int QueryObjectsBy(const FindRows& find, std::vector<T*>* results);

  // Gives objects their ids back unless told to keep the new ones: the mapper sets
  // them before the transaction ends, and after one that fails no object may go by
  // the id of somebody else's row. Objects whose key is no number have none.
  template <class T, class = void>
  struct Ids {
    Ids(T*, int) {}
    void Keep() {}
  };

  VPTZ_HIDDEN VptzModel();
  VPTZ_HIDDEN ~VptzModel();

  VPTZ_HIDDEN std::shared_ptr<vptz::OpenDatabase> Current() const;
  VPTZ_HIDDEN void Replace(std::string path, std::shared_ptr<vptz::OpenDatabase> database);
  VPTZ_HIDDEN std::string Path() const;
  VPTZ_HIDDEN void BringUpToDate(const std::string& path, const std::string& schema,
                                 std::shared_ptr<vptz::OpenDatabase>* database);
  VPTZ_HIDDEN void CloseAndWait(const std::string& path);
  VPTZ_HIDDEN int LoadInitialData(const std::string& data_file);
  VPTZ_HIDDEN static void ForgetInChild();

  std::string path_;                              // guarded by holding_, as is
  std::shared_ptr<vptz::OpenDatabase> database_;  // this
  mutable std::mutex holding_;                    // never held for longer than it takes to copy these

  VPTZ_HIDDEN static VptzModel& instance_;
  VPTZ_HIDDEN static std::mutex lock_;  // held while a database is opened or closed
};

// For objects that have numbers for ids.
template <class T>
struct VptzModel::Ids<T, decltype(std::declval<T&>().set_id(0))> {
  // Notes the ids of `count` objects that lie one behind the other.
  Ids(T* first, int count) : objects(first) {
    for (int i = 0; i < count; ++i) ids.push_back(first[i].id());
  }
  ~Ids() {
    for (std::size_t i = 0; i < ids.size(); ++i) objects[i].set_id(ids[i]);
  }
  Ids(const Ids&) = delete;
  Ids& operator=(const Ids&) = delete;

  // The objects keep what they have now.
  void Keep() { ids.clear(); }

  // The objects, and the ids to give back.
  T* objects;
  std::vector<std::uint32_t> ids;
};

template <class T>
int VptzModel::Add(T* object) {
  static const vptz::OperationMessages messages = {"Add", "VptzModel::Add: Retry limit exceeded! (%s)",
                                                   "VptzModel::Add: Exception occurs! (%s)"};
  Ids<T> before(object, 1);
  int id = -1;
  const bool done = Retry(messages, [&](odb::database& database) {
    id = ResultFromId(database.persist(*object));
    return true;
  });
  if (!done) return -1;
  before.Keep();
  return id;
}

template <class T>
int VptzModel::AddAll(T* objects, int count) {
  // Kept: the message names Add.
  static const vptz::OperationMessages messages = {"AddAll", nullptr, "VptzModel::Add: Exception occurs! (%s)"};
  Ids<T> before(objects, count);
  const bool done = Once(messages, [&](odb::database& database) {
    for (int i = 0; i < count; ++i) {
      database.persist(objects[i]);
    }
    return true;
  });
  if (!done) return -1;
  before.Keep();
  return 0;
}

template <class T>
int VptzModel::Update(const T& object) {
  static const vptz::OperationMessages messages = {"Update", "VptzModel::Update: Retry limit exceeded! (%s)",
                                                   "VptzModel::Update: Exception occurs! (%s)"};
  const bool done = Retry(messages, [&](odb::database& database) {
    database.update(object);
    return true;
  });
  return done ? 0 : -1;
}

template <class T>
int VptzModel::Erase(const odb::query<T>& query) {
  static const vptz::OperationMessages messages = {"Erase", "VptzModel::Erase: Retry limit exceeded! (%s)",
                                                   "VptzModel::Erase: Exception occurs! (%s)"};
  const bool done =
      Retry(messages, [&](odb::database& database) { return database.template erase_query<T>(query) > 0; });
  return done ? 0 : -1;
}

template <class T>
std::unique_ptr<T> VptzModel::NewFrom(typename odb::result<T>::iterator& row) {
  std::unique_ptr<T> object(odb::access::object_factory<T, T*>::create());
  row.load(*object);
  return object;
}

template <class T>
std::unique_ptr<T> VptzModel::FirstOf(odb::result<T> rows) {
  typename odb::result<T>::iterator row = rows.begin();
  return row == rows.end() ? nullptr : NewFrom<T>(row);
}

template <class T, class FindObject>
int VptzModel::QueryObjectBy(const FindObject& find, T** result) {
  static const vptz::OperationMessages messages = {
      "QueryObject", "VptzModel::QueryObject: Retry limit exceeded! (%s)", "Database exception! (%s)"};
  delete *result;
  *result = nullptr;
  std::unique_ptr<T> found;
  const bool done = Retry(messages, [&](odb::database& database) {
    found = find(database);
    if (found == nullptr) LogEmptyResult();
    return found != nullptr;
  });
  if (!done) {
    return -1;
  }
  *result = found.release();
  return 0;
}

template <class T>
int VptzModel::QueryObject(const odb::query<T>& query, T** result) {
  return QueryObjectBy([&](odb::database& database) { return FirstOf<T>(database.template query<T>(query)); },
                       result);
}

template <class T, class FindRows>
int VptzModel::QueryObjectsBy(const FindRows& find, std::vector<T*>* results) {
  std::vector<std::unique_ptr<T>> found;
  const bool done = Retry(QueryObjectsMessages(), [&](odb::database& database) {
    found.clear();
    odb::result<T> rows(find(database));
    for (typename odb::result<T>::iterator row = rows.begin(); row != rows.end(); ++row) {
      found.push_back(NewFrom<T>(row));
    }
    return true;
  });
  if (!done) {
    CleanQuery(results);
    return -1;
  }
  results->reserve(results->size() + found.size());
  for (std::unique_ptr<T>& object : found) {
    results->push_back(object.release());
  }
  return results->empty() ? -1 : 0;
}

template <class T>
int VptzModel::QueryObjects(const odb::query<T>& query, std::vector<T*>* results) {
  return QueryObjectsBy([&](odb::database& database) { return database.template query<T>(query); }, results);
}

template <class T>
T* VptzModel::LoadLazyPtr(odb::lazy_shared_ptr<T>& reference) {
  static const vptz::OperationMessages messages = {"LoadLazyPtr",
                                                   "VptzModel::LoadLazyPtr: Retry limit exceeded! (%s)",
                                                   "VptzModel::LoadLazyPtr: Exception occurs! (%s)"};
  if (!reference) {
    return nullptr;
  }
  // Not loaded(), which denies an object that a caller has set.
  if (T* const object = reference.get_eager().get()) {
    return object;
  }
  const auto id = reference.template object_id<T>();
  const bool done = Retry(messages, [&](odb::database& database) {
    // The database that the reference was read from may have been closed since.
    reference.reset(database, id);
    reference.load();
    return true;
  });
  return done ? reference.get_eager().get() : nullptr;
}

template <class T>
void VptzModel::CleanQuery(std::vector<T*>* objects) {
  for (T* object : *objects) {
    delete object;
  }
  objects->clear();
}

#endif
