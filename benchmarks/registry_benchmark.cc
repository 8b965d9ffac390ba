// A whole-registry load, through the client and as the same bulk read through
// SQLite's own interface, over the number of devices, in one run on one
// processor.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <vptz/model/vptzmodel.h>
#include <vptz/vptz_client.h>

#include "installed_paths.h"

namespace {

constexpr int kRepetitions = 15;
constexpr int kSizes[] = {1, 8, 64, 512, 4096};

void PinToOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  if (sched_setaffinity(0, sizeof one, &one) != 0) std::perror("sched_setaffinity");
}

void Require(bool done, const std::string& what) {
  if (!done) throw std::runtime_error(what + " failed");
}

struct Closer {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Connection = std::unique_ptr<sqlite3, Closer>;
using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

Connection Open() {
  sqlite3* connection = nullptr;
  const int result = sqlite3_open_v2(vptz::DatabaseFile(), &connection, SQLITE_OPEN_READWRITE, nullptr);
  Connection owner(connection);
  Require(result == SQLITE_OK, "opening the database");
  return owner;
}

void Execute(sqlite3* connection, const std::string& statements) {
  Require(sqlite3_exec(connection, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, statements);
}

// ---- rows -------------------------------------------------------------------

constexpr char kEmptyTables[] =
    "BEGIN; DELETE FROM preset; DELETE FROM ptz; DELETE FROM movement_parameter; DELETE FROM movement;"
    "DELETE FROM media_parameter; DELETE FROM media; DELETE FROM device; DELETE FROM protocol;"
    "DELETE FROM device_type; DELETE FROM sqlite_sequence; COMMIT; VACUUM;";

// The rows of devices 1 to N, written by SQLite itself: two media sources with
// nine parameters each, a PTZ node with three movements of two parameters, ten
// presets.
constexpr char kFill[] = R"(
  BEGIN;
  INSERT INTO device_type (name, method, reserved) VALUES ('camera', 0, '');
  INSERT INTO protocol (name, version, reserved) VALUES ('ONVIF', '', '');
  CREATE TEMP TABLE number AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %d)
    SELECT i FROM n;
  CREATE TEMP TABLE parameter (place INTEGER, name TEXT);
  INSERT INTO parameter VALUES (1, 'width'), (2, 'height'), (3, 'frame_rate'), (4, 'bit_rate'),
    (5, 'brightness'), (6, 'contrast'), (7, 'sharpness'), (8, 'auto_focus'), (9, 'backlight_mode');
  INSERT INTO device (device_type, service_uri, address, http_uri, mac, uuid, authorization, authorized,
      is_alive, protocol, host_name, manufacture, model_name, firmware_version, deletable, is_setting_applied,
      tracking, reserved)
    SELECT 1, 'http://192.0.2.' || i || '/onvif/device_service', '192.0.2.' || i, 'http://192.0.2.' || i,
      '00:1b:44:11:3a:b7', '7d1c5c6e-0000-4b7e-9df5-2f5f0c3b8a11', '{"account":"a","credentials":"c"}', 1, 1, 1,
      'camera' || i, 'maker', 'model', '1.0.0', 1, 1, 0, '' FROM number;
  INSERT INTO media (device, node, url, authorization, is_enable, reserved)
    SELECT i, side, 'rtsp://192.0.2.' || i || ':554/' || side, '', 1, ''
    FROM number, (SELECT 'main' AS side UNION ALL SELECT 'sub') ORDER BY i, side;
  INSERT INTO media_parameter (media, name, value, min, max, reserved)
    SELECT id, name, 50, 0, 100, '' FROM media, parameter ORDER BY id, place;
  INSERT INTO movement (have_absolute_move, have_continues_move, have_relative_move, reserved)
    SELECT 1, 1, 0, '' FROM number, (SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3);
  INSERT INTO movement_parameter (movement, name, value, min, max, reserved)
    SELECT id, kind, 0, -170, 170, '' FROM movement, (SELECT 'position' AS kind UNION ALL SELECT 'speed')
    ORDER BY id, kind;
  INSERT INTO ptz (device, node, is_enable, authorization, pan, tilt, zoom, track_mode, reserved)
    SELECT i, 'ptz0', 1, '', 3 * i - 2, 3 * i - 1, 3 * i, 0, '' FROM number;
  INSERT INTO preset (ptz, preset_id, token, name, pan, tilt, zoom, reserved)
    SELECT i, place, 'token' || place, 'preset ' || place, 1, 2, 3, ''
    FROM number, (SELECT place FROM parameter UNION ALL SELECT 10) ORDER BY i, place;
  COMMIT;
)";

void Fill(int devices) {
  char statements[sizeof kFill + 16];
  std::snprintf(statements, sizeof statements, kFill, devices);
  const Connection connection = Open();
  Execute(connection.get(), kEmptyTables);
  Execute(connection.get(), statements);
}

// ---- the same read without the client ---------------------------------------

// What the client reads, with an 'i' for each whole number, 'r' for each real
// number and 't' for each text.
struct Table {
  const char* select;
  const char* columns;
};

constexpr Table kTables[] = {
    {"SELECT id, name FROM device_type ORDER BY id", "it"},
    {"SELECT id, name FROM protocol ORDER BY id", "it"},
    {"SELECT id, service_uri, address, http_uri, mac, uuid, authorization, authorized, is_alive, host_name,"
     " manufacture, model_name, firmware_version, deletable, is_setting_applied, tracking, device_type, "
     "protocol"
     " FROM device ORDER BY id",
     "ittttttiittttiiiii"},
    {"SELECT device, id, node, url, is_enable FROM media ORDER BY id", "iitti"},
    {"SELECT media, name, value, min, max FROM media_parameter ORDER BY id", "itrrr"},
    {"SELECT id, have_absolute_move, have_continues_move, have_relative_move FROM movement ORDER BY id",
     "iiii"},
    {"SELECT movement, name, value, min, max FROM movement_parameter ORDER BY id", "itrrr"},
    {"SELECT device, id, node, is_enable, track_mode, pan, tilt, zoom FROM ptz ORDER BY id", "iitiiiii"},
    {"SELECT ptz, preset_id, token, name, pan, tilt, zoom FROM preset ORDER BY id", "iittrrr"},
};

void ReadColumn(sqlite3_stmt* row, int column, char kind) {
  switch (kind) {
    case 'i':
      return benchmark::DoNotOptimize(sqlite3_column_int64(row, column));
    case 'r':
      return benchmark::DoNotOptimize(sqlite3_column_double(row, column));
    default:
      benchmark::DoNotOptimize(sqlite3_column_text(row, column));
      return benchmark::DoNotOptimize(sqlite3_column_bytes(row, column));
  }
}

void ReadTable(sqlite3* connection, const Table& table) {
  sqlite3_stmt* prepared = nullptr;
  Require(sqlite3_prepare_v2(connection, table.select, -1, &prepared, nullptr) == SQLITE_OK, table.select);
  const Statement statement(prepared);
  int result = SQLITE_OK;
  while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
    for (int i = 0; table.columns[i] != '\0'; ++i) ReadColumn(prepared, i, table.columns[i]);
  }
  Require(result == SQLITE_DONE, table.select);
}

void RawRead(benchmark::State& state) {
  const Connection connection = Open();
  for (auto _ : state) {
    Execute(connection.get(), "BEGIN");
    for (const Table& table : kTables) ReadTable(connection.get(), table);
    Execute(connection.get(), "COMMIT");
  }
}

// ---- the client -------------------------------------------------------------

void Lookups(benchmark::State& state, bool connected, int devices) {
  VptzClient client;
  if (connected) Require(client.Connect("benchmark", nullptr) == 0, "Connect");
  for (auto _ : state) {
    const CVptzDevice* const device = client.QueryDeviceById(devices);
    if (device == nullptr || device->media_list.size() != 2 || device->ptz_list.at(0).presets.size() != 10) {
      throw std::runtime_error("the lookup gave another device");
    }
  }
}

// ---- printing ---------------------------------------------------------------

// The figures of all sizes in one file: each run by itself would begin
// --benchmark_out anew.
class JsonFile {
 public:
  explicit JsonFile(const std::string& path) : file_(path) {
    Require(file_.is_open(), path);
    reporter_.SetOutputStream(&file_);
  }
  ~JsonFile() { reporter_.Finalize(); }

  void Add(const benchmark::BenchmarkReporter::Context& context) {
    if (!std::exchange(begun_, true)) reporter_.ReportContext(context);
  }
  void Add(const std::vector<benchmark::BenchmarkReporter::Run>& runs) { reporter_.ReportRuns(runs); }

 private:
  std::ofstream file_;
  benchmark::JSONReporter reporter_;
  bool begun_ = false;
};

// The file that "--benchmark_out=FILE" names, which is taken out of the arguments.
std::unique_ptr<JsonFile> TakeOut(std::vector<char*>& arguments) {
  const std::string option = "--benchmark_out=";
  const auto found = std::find_if(arguments.begin(), arguments.end(),
                                  [&](const char* word) { return std::string(word).rfind(option, 0) == 0; });
  if (found == arguments.end()) return nullptr;
  const std::string path = *found + option.size();
  arguments.erase(found);
  return std::make_unique<JsonFile>(path);
}

// Prints as usual and remembers the medians, in microseconds of the processor:
// nothing waits here, and other work on the machine disturbs these less.
class Reporter : public benchmark::ConsoleReporter {
 public:
  explicit Reporter(std::unique_ptr<JsonFile> json) : ConsoleReporter(OO_None), json_(std::move(json)) {}

  bool ReportContext(const Context& context) override {
    if (json_) json_->Add(context);
    return ConsoleReporter::ReportContext(context);
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    if (json_) json_->Add(runs);
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") medians_[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Nothing when a filter left some out.
  void PrintTable() const {
    if (medians_.size() != 3 * std::size(kSizes)) return;
    std::printf("\n%8s %10s %12s %8s %12s %14s %8s\n", "devices", "raw us", "lookup us", "ratio", "with bus us",
                "us per device", "growth");
    double before = 0.0;
    for (const int devices : kSizes) {
      const std::string size = std::to_string(devices);
      const double raw = medians_.at("raw/" + size);
      const double lookup = medians_.at("lookup/" + size);
      std::printf("%8d %10.1f %12.1f %8.2f %12.1f %14.2f %8.2f\n", devices, raw, lookup, lookup / raw,
                  medians_.at("lookup_with_bus/" + size), lookup / devices,
                  before == 0.0 ? 0.0 : lookup / before);
      before = lookup;
    }
  }

 private:
  std::unique_ptr<JsonFile> json_;
  std::map<std::string, double> medians_;
};

template <class Body>
void Register(const std::string& name, Body body) {
  benchmark::RegisterBenchmark(name.c_str(), body)
      ->Repetitions(kRepetitions)
      ->ReportAggregatesOnly()
      ->MinTime(0.05)
      ->Unit(benchmark::kMicrosecond);
}

void Run(int devices, Reporter& reporter) {
  Fill(devices);
  const std::string size = std::to_string(devices);
  benchmark::ClearRegisteredBenchmarks();
  Register("raw/" + size, RawRead);
  Register("lookup/" + size, [=](benchmark::State& state) { Lookups(state, false, devices); });
  Register("lookup_with_bus/" + size, [=](benchmark::State& state) { Lookups(state, true, devices); });
  benchmark::RunSpecifiedBenchmarks(&reporter);
}

}  // namespace

int main(int count, char** arguments) {
  PinToOneProcessor();
  std::string interleave = "--benchmark_enable_random_interleaving=true";
  std::string plain = "--benchmark_color=false";
  std::vector<char*> all(arguments, arguments + count);
  std::unique_ptr<JsonFile> json = TakeOut(all);
  all.push_back(interleave.data());
  all.push_back(plain.data());
  int total = static_cast<int>(all.size());
  benchmark::Initialize(&total, all.data());
  std::ofstream(vptz::ConfigFile()) << "[MQTT]\ntimeout=2\n";
  Require(VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", "") == 0, "Initialize");
  Reporter reporter(std::move(json));
  for (const int devices : kSizes) Run(devices, reporter);
  reporter.PrintTable();
  return 0;
}
