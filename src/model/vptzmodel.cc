#include <vptz/model/vptzmodel.h>

#include <pthread.h>
#include <sqlite3.h>
#include <unistd.h>
#include <odb/connection.hxx>
#include <odb/exceptions.hxx>
#include <odb/transaction.hxx>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <new>

#include <vptz/utils.h>

#include "log.h"
#include "model/open_database.h"
#include "model/schema_update.h"
#include "model/sql_script.h"
#include "no_throw.h"

using vptz::kInitialize;
using vptz::LogLevel;
using vptz::OpenDatabase;
using vptz::log_source::kModel;
using vptz::log_source::kModelTemplates;

namespace {

constexpr int kAttempts = 402;
constexpr std::chrono::microseconds kPause{10000};

constexpr int kExisting = SQLITE_OPEN_READWRITE;
constexpr int kExistingOrNew = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

// Says that no database is open, in the way in which the mapper's own
// exceptions say what is wrong.
struct NoOpenDatabase : odb::exception {
  const char* what() const noexcept override { return "no open database"; }
  odb::exception* clone() const override { return new NoOpenDatabase(*this); }
};

// Sleeps the whole pause even when signals interrupt it.
void Pause() {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + kPause;
  auto left = kPause;
  while (left.count() > 0 && usleep(static_cast<useconds_t>(left.count())) != 0 && errno == EINTR) {
    left = std::chrono::ceil<std::chrono::microseconds>(end - steady_clock::now());
  }
}

// What a child made by fork() found open; never used nor closed.
OpenDatabase* inherited = nullptr;

// A line of an object operation; those come from the templates in the header.
void LogFailure(LogLevel level, const char* function, const char* format, const char* description) {
  VPTZ_LOG_AS(function, level, kModelTemplates, format, description);
}

std::weak_ptr<const void> LifeOf(const std::shared_ptr<OpenDatabase>& database) {
  return database == nullptr ? std::weak_ptr<const void>() : database->Life();
}

// For what was open when Initialize failed: all its connections check references.
std::shared_ptr<OpenDatabase> OpenAnew(const std::string& path) {
  return vptz::NoThrow(std::shared_ptr<OpenDatabase>(),
                       [&] { return std::make_shared<OpenDatabase>(path, kExistingOrNew); });
}

}  // namespace

// Never destroyed: an open database is not closed when the library is unloaded,
// and a client that is destroyed late still finds it.
VptzModel& VptzModel::instance_ = *new VptzModel;
std::mutex VptzModel::lock_;

VptzModel::VptzModel() { pthread_atfork(nullptr, nullptr, &VptzModel::ForgetInChild); }

VptzModel::~VptzModel() = default;

VptzModel& VptzModel::Instance() { return instance_; }

// In a child made by fork() the database is the parent's: to use or to close it
// could roll back or damage what the parent is just writing. Threads that are not
// here may hold the locks and be in the middle of the members. So all of it is made
// anew where it is, without a look at what was there.
void VptzModel::ForgetInChild() {
  inherited = instance_.database_.get();
  new (&instance_.database_) std::shared_ptr<OpenDatabase>;
  new (&instance_.path_) std::string;
  new (&instance_.holding_) std::mutex;
  new (&lock_) std::mutex;
}

std::shared_ptr<OpenDatabase> VptzModel::Current() const {
  const std::lock_guard<std::mutex> lock(holding_);
  return database_;
}

// What was there ends with the parameters, which outlive the lock.
void VptzModel::Replace(std::string path, std::shared_ptr<OpenDatabase> database) {
  const std::lock_guard<std::mutex> lock(holding_);
  path_.swap(path);
  database_.swap(database);
}

std::string VptzModel::Path() const {
  const std::lock_guard<std::mutex> lock(holding_);
  return path_;
}

bool VptzModel::IsConnected() const { return Current() != nullptr; }

int VptzModel::SchemaVersion(const std::string& schema) {
  const std::shared_ptr<OpenDatabase> database = Current();
  if (database == nullptr) return -1;
  try {
    return database->SchemaVersion(schema);
  } catch (const std::exception& error) {
    VPTZ_LOG(LogLevel::kError, kModel, "Database exception! (%s)", error.what());
    return -1;
  }
}

void VptzModel::Release() {
  const std::lock_guard<std::mutex> lock(lock_);
  Replace("", nullptr);
}

int VptzModel::Connect(const std::string& path) {
  const std::lock_guard<std::mutex> lock(lock_);
  std::string kept;
  try {
    kept = path;
    VPTZ_LOG(LogLevel::kNotice, kModel, "Connect database: %s", path.c_str());
    auto database = std::make_shared<OpenDatabase>(path, kExisting);
    database->mapper().connection();  // the object by itself opens no file
    Replace(std::move(kept), std::move(database));
    return 0;
  } catch (const std::exception& error) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to connect to the database! (%s)", error.what());
    Replace(std::move(kept), nullptr);
    return -1;
  }
}

int VptzModel::Initialize(const std::string& path, const std::string& schema, const std::string& data_file) {
  const std::lock_guard<std::mutex> lock(lock_);
  std::string kept;
  std::shared_ptr<OpenDatabase> database;
  try {
    // Kept: the mode lacks the execute bits; the outcome does not matter.
    MakeDirByFilePath(path, 0644, 0);
    kept = path;
    VPTZ_LOG(LogLevel::kNotice, kModel, "Create database: %s", path.c_str());
    database = std::make_shared<OpenDatabase>(path, kExistingOrNew);
    BringUpToDate(path, schema, &database);
    Replace(std::move(kept), std::move(database));
    return LoadInitialData(data_file);
  } catch (const std::bad_alloc&) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to new a database instance!");
  } catch (const std::exception& error) {
    VPTZ_LOG(LogLevel::kError, kModel, "Failed to new a database instance! (%s)", error.what());
  }
  Replace(std::move(kept), database == nullptr ? nullptr : OpenAnew(path));
  return -1;
}

void VptzModel::BringUpToDate(const std::string& path, const std::string& schema,
                              std::shared_ptr<OpenDatabase>* database) {
  int version = (*database)->SchemaVersion(schema);
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Database schema version is: %d", version);
  if (vptz::IsWorthless(version)) {
    vptz::RequireReadableVersion(**database, schema);
    VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Database schema is too old, remove it.");
    database->reset();
    CloseAndWait(path);
    Remove(path);
    *database = std::make_shared<OpenDatabase>(path, kExistingOrNew);
    version = 0;
  }
  vptz::UpdateSchema(**database, schema, version);
}

// Until nothing uses that file, if it is the one that was open: a connection to a
// file that is removed must not meet the journal of the file that takes its place.
void VptzModel::CloseAndWait(const std::string& path) {
  std::error_code differs;
  if (!std::filesystem::equivalent(Path(), path, differs)) return;
  const std::weak_ptr<const void> former = LifeOf(Current());
  Replace("", nullptr);
  while (!former.expired()) Pause();
}

int VptzModel::LoadInitialData(const std::string& data_file) {
  if (data_file.empty()) return 0;
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Load database initial data from: %s", data_file.c_str());
  if (ExecuteFromFile(data_file) == 0) return 0;
  VPTZ_LOG_AS(kInitialize, LogLevel::kError, kModel, "Failed to load the initial data from %s",
              data_file.c_str());
  return -1;
}

int VptzModel::ExecuteFromFile(const std::string& script) {
  int wait_status = 0;
  // Without a file the program would run the script in a database of its own
  // and report success.
  const auto run = [&] {
    const std::string path = Path();
    return !path.empty() && vptz::RunSqlScript(path, script, &wait_status);
  };
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

bool VptzModel::RunInTransaction(OpenDatabase* database, const Operation& operation) {
  if (database == nullptr) {
    throw NoOpenDatabase();
  }
  const odb::connection_ptr connection(database->mapper().connection());
  odb::transaction transaction(connection->begin());
  const bool done = operation(database->mapper());
  transaction.commit();
  return done;
}

bool VptzModel::Retry(const vptz::OperationMessages& messages, const Operation& operation) {
  const std::shared_ptr<OpenDatabase> database = instance_.Current();
  for (int attempts = kAttempts;;) {
    try {
      return RunInTransaction(database.get(), operation);
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
  const std::shared_ptr<OpenDatabase> database = instance_.Current();
  try {
    return RunInTransaction(database.get(), operation);
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
