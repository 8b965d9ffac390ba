#include <vptz/model/vptzmodel.h>

#include <sqlite3.h>
#include <unistd.h>
#include <odb/connection.hxx>
#include <odb/exceptions.hxx>
#include <odb/schema-catalog.hxx>
#include <odb/sqlite/connection-factory.hxx>
#include <odb/sqlite/database.hxx>
#include <odb/transaction.hxx>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <new>

#include <vptz/utils.h>

#include "log.h"
#include "model/sql_script.h"
#include "no_throw.h"

using vptz::LogLevel;
using vptz::log_source::kModel;
using vptz::log_source::kModelTemplates;

namespace {

constexpr int kAttempts = 402;
constexpr std::chrono::microseconds kPause{10000};

// Files of this version or an older one hold nothing worth keeping.
constexpr int kLastWorthlessVersion = 3;

// Its parts log under its name.
constexpr char kInitialize[] = "Initialize";

// Says that no database is open, in the way in which the mapper's own
// exceptions say what is wrong.
struct NoOpenDatabase : odb::exception {
  const char* what() const noexcept override { return "no open database"; }
  odb::exception* clone() const override { return new NoOpenDatabase(*this); }
};

// In full: signals that the application's thread handles meanwhile do not make
// the wait for a lock any shorter.
void Pause() {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + kPause;
  auto left = kPause;
  while (left.count() > 0 && usleep(static_cast<useconds_t>(left.count())) != 0 && errno == EINTR) {
    left = std::chrono::ceil<std::chrono::microseconds>(end - steady_clock::now());
  }
}

// Who has opened the database. In a child made by fork() it is the parent's: to
// close it there could roll back what the parent is just writing.
std::atomic<pid_t> opener{0};

// Where such a database is left; never closed.
odb::database* inherited = nullptr;

// The mapper takes a version that cannot be read, for the table is damaged, for
// none. That is no reason to throw the file away.
struct UnreadableVersion : odb::exception {
  const char* what() const noexcept override { return "the schema's version cannot be read"; }
  odb::exception* clone() const override { return new UnreadableVersion(*this); }
};

// Throws when the schema's row in the table of versions does not tell one. Other
// schemas may have rows there too.
void RequireReadableVersion(odb::connection& connection, const std::string& schema) {
  if (connection.execute("SELECT 1 FROM sqlite_master WHERE name = 'schema_version'") > 0 &&
      connection.execute("SELECT 1 FROM schema_version WHERE name = '" + schema +
                         "' AND typeof(version) <> 'integer'") > 0) {
    throw UnreadableVersion();
  }
}

// Has room for all its connections from the moment each is made: to give one back
// is part of its destruction and must not run out of memory.
class ConnectionPool : public odb::sqlite::connection_pool_factory {
 private:
  pooled_connection_ptr create() override {
    connections_.reserve(++made_);
    return connection_pool_factory::create();
  }

  std::size_t made_ = 0;
};

// A line of an object operation; those come from the templates in the header.
void LogFailure(LogLevel level, const char* function, const char* format, const char* description) {
  VPTZ_LOG_AS(function, level, kModelTemplates, format, description);
}

// Switches the checks of references off for a connection, and on again however
// the scope is left.
class ForeignKeysOff {
 public:
  explicit ForeignKeysOff(odb::connection& connection) : connection_(connection) {
    connection_.execute("PRAGMA foreign_keys=OFF");
  }
  ~ForeignKeysOff() {
    try {
      connection_.execute("PRAGMA foreign_keys=ON");
    } catch (const odb::exception& error) {
      VPTZ_LOG_AS(kInitialize, LogLevel::kError, kModel, "Failed to new a database instance! (%s)",
                  error.what());
    }
  }
  ForeignKeysOff(const ForeignKeysOff&) = delete;
  ForeignKeysOff& operator=(const ForeignKeysOff&) = delete;

 private:
  odb::connection& connection_;
};

void Migrate(odb::database& database, odb::connection& connection, const std::string& schema, int version) {
  try {
    odb::transaction transaction(connection.begin());
    odb::schema_catalog::migrate(database, static_cast<odb::schema_version>(version), schema);
    transaction.commit();
  } catch (...) {
    // The mapper remembers each step's version, also of those that were rolled
    // back; 0 makes it read the file again.
    database.schema_version_migration(0, false, schema);
    throw;
  }
}

}  // namespace

// Never destroyed: an open database is not closed when the library is unloaded,
// and a client that is destroyed late still finds it.
VptzModel& VptzModel::instance_ = *new VptzModel;
std::mutex VptzModel::lock_;

VptzModel& VptzModel::Instance() { return instance_; }

bool VptzModel::IsConnected() const { return database_ != nullptr; }

int VptzModel::SchemaVersion(const std::string& schema) {
  if (database_ == nullptr) return -1;
  try {
    return static_cast<int>(database_->schema_version(schema));
  } catch (const std::exception& error) {
    VPTZ_LOG(LogLevel::kError, kModel, "Database exception! (%s)", error.what());
    return -1;
  }
}

void VptzModel::Release() {
  if (opener != 0 && opener != getpid()) {
    inherited = database_.release();
    opener = 0;
  }
  const std::lock_guard<std::mutex> lock(lock_);
  database_.reset();
  path_.clear();
}

void VptzModel::Open(const std::string& path, int flags) {
  opener = getpid();
  database_ = std::make_unique<odb::sqlite::database>(vptz::AsPath(path), flags, true, "",
                                                      std::make_unique<ConnectionPool>());
}

int VptzModel::Connect(const std::string& path) {
  Release();
  const std::lock_guard<std::mutex> lock(lock_);
  try {
    path_ = path;
    VPTZ_LOG(LogLevel::kNotice, kModel, "Connect database: %s", path.c_str());
    Open(path, SQLITE_OPEN_READWRITE);
    database_->connection();  // the object by itself opens no file
    return 0;
  } catch (const std::exception& error) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to connect to the database! (%s)", error.what());
    database_.reset();
    return -1;
  }
}

int VptzModel::Initialize(const std::string& path, const std::string& schema, const std::string& data_file) {
  Release();
  const std::lock_guard<std::mutex> lock(lock_);
  try {
    // Kept: the mode lacks the execute bits; the outcome does not matter.
    MakeDirByFilePath(path, 0644, 0);
    path_ = path;
    VPTZ_LOG(LogLevel::kNotice, kModel, "Create database: %s", path.c_str());
    Open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    UpdateSchema(schema);
    if (data_file.empty()) {
      return 0;
    }
    VPTZ_LOG(LogLevel::kNotice, kModel, "Load database initial data from: %s", data_file.c_str());
    if (ExecuteFromFile(data_file) < 0) {
      VPTZ_LOG(LogLevel::kError, kModel, "Failed to load the initial data from %s", data_file.c_str());
      return -1;
    }
    return 0;
  } catch (const std::bad_alloc&) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to new a database instance!");
  } catch (const std::exception& error) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to new a database instance! (%s)", error.what());
  }
  return -1;
}

// Replaces the file of an old version, and an empty one, by a new one.
void VptzModel::ReplaceOldFile(const std::string& schema, int* version) {
  if (*version > kLastWorthlessVersion) {
    return;
  }
  RequireReadableVersion(*database_->connection(), schema);
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Database schema is too old, remove it.");
  database_.reset();
  Remove(path_);
  Open(path_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  *version = 0;
}

void VptzModel::UpdateSchema(const std::string& schema) {
  auto version = static_cast<int>(database_->schema_version(schema));
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Database schema version is: %d", version);
  ReplaceOldFile(schema, &version);

  const odb::connection_ptr connection(database_->connection());
  const ForeignKeysOff foreign_keys_off(*connection);
  if (version == 0) {
    // Kept: the grammar of the message.
    VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel,
                "Database schema does not exists. Create database schema: %s", schema.c_str());
    odb::transaction transaction(connection->begin());
    odb::schema_catalog::create_schema(*database_, schema, false);
    transaction.commit();
    return;
  }
  const int current = static_cast<int>(odb::schema_catalog::current_version(*database_, schema));
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "The embedded schema version is: %d", current);
  if (version < current) {
    VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Migrate the schema from version %d to %d", version,
                current);
    Migrate(*database_, *connection, schema, current);
    VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "The schema has been migrated to version %d", current);
  }
}

int VptzModel::ExecuteFromFile(const std::string& script) {
  int wait_status = 0;
  // Without a file the program would run the script in a database of its own
  // and report success.
  const auto run = [&] { return !path_.empty() && vptz::RunSqlScript(path_, script, &wait_status); };
  if (!vptz::NoThrow(false, run)) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to execute SQL file from: (%s)", script.c_str());
    return -1;
  }
  if (wait_status != 0) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to execute SQL file from (%s) with exit status (%d)",
             script.c_str(), wait_status);
    return -1;
  }
  return 0;
}

bool VptzModel::RunInTransaction(const Operation& operation) {
  odb::database* database = instance_.database_.get();
  if (database == nullptr) {
    throw NoOpenDatabase();
  }
  const odb::connection_ptr connection(database->connection());
  odb::transaction transaction(connection->begin());
  const bool done = operation(*database);
  transaction.commit();
  return done;
}

bool VptzModel::Retry(const vptz::OperationMessages& messages, const Operation& operation) {
  for (int attempts = kAttempts;;) {
    try {
      return RunInTransaction(operation);
    } catch (const odb::recoverable& conflict) {
      if (--attempts == 0) {
        LogFailure(LogLevel::kDetail, messages.function, messages.retry_limit, conflict.what());
        return false;
      }
    } catch (const odb::exception& error) {
      LogFailure(LogLevel::kError, messages.function, messages.exception, error.what());
      return false;
    }
    Pause();
  }
}

bool VptzModel::Once(const vptz::OperationMessages& messages, const Operation& operation) {
  try {
    return RunInTransaction(operation);
  } catch (const odb::exception& error) {
    LogFailure(LogLevel::kError, messages.function, messages.exception, error.what());
    return false;
  }
}

void VptzModel::LogEmptyResult() {
  VPTZ_LOG_AS("QueryObject", LogLevel::kDetail, kModelTemplates, "VptzModel::QueryObject: Empty result!");
}

const vptz::OperationMessages& VptzModel::QueryObjectsMessages() {
  static const vptz::OperationMessages messages = {
      "QueryObjects", "VptzModel::QueryObjects: Retry limit exceeded! (%s)", "Database exception! (%s)"};
  return messages;
}
