// Queries of several entities for one row and for lists, through the model and
// through SQLite's own interface, in one run on one processor.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <vptz/model/device.h>
#include <vptz/model/media.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>
#include <vptz/model/vptzmodel.h>

#include "allocations.h"
#include "raw_rows.h"
#include "support/temp_dir.h"

namespace {

constexpr int kRepetitions = 15;
constexpr int kQueriesEach = 3000;

// As many as the service writes for two cameras.
constexpr int kDevices = 2;
constexpr int kMediaEach = 2;
constexpr int kParametersEach = 9;
constexpr int kPresetsEach = 10;

void PinToOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  if (sched_setaffinity(0, sizeof one, &one) != 0) std::perror("sched_setaffinity");
}

void Require(bool done, const std::string& what) {
  if (!done) throw std::runtime_error(what + " failed");
}

void FillMedia(Device* device) {
  for (int i = 1; i <= kMediaEach; ++i) {
    Media media(device, "token" + std::to_string(i), "rtsp://192.0.2.1/main", "", true);
    Require(Media::Add(&media) > 0, "adding a media source");
    for (int k = 1; k <= kParametersEach; ++k) {
      MediaParameter parameter(&media, "parameter" + std::to_string(k), k, 0, 100);
      Require(MediaParameter::Add(&parameter) > 0, "adding a parameter");
    }
  }
}

void FillPresets(Device* device) {
  Ptz node(device, nullptr, nullptr, nullptr, "ptz0", "", true, 0);
  Require(Ptz::Add(&node) > 0, "adding a PTZ node");
  std::vector<Preset> presets;
  for (unsigned i = 1; i <= kPresetsEach; ++i) {
    presets.emplace_back(&node, i, "token" + std::to_string(i), "preset " + std::to_string(i), 1, 2, 3);
  }
  Require(Preset::AddAll(presets.data(), kPresetsEach) == 0, "adding presets");
}

void Fill() {
  Protocol protocol("ONVIF");
  Require(Protocol::Add(&protocol) == 1, "adding a protocol");
  for (int i = 1; i <= kDevices; ++i) {
    Device device("http://192.0.2.1/onvif/device_service", "192.0.2.1", nullptr, &protocol, "http://192.0.2.1",
                  true, "00:1b:44:11:3a:b7", "7d1c5c6e-0000-4b7e-9df5-2f5f0c3b8a11", true, true, true, false);
    device.set_host_name("camera" + std::to_string(i));
    Require(Device::Add(&device) == i, "adding a device");
    FillMedia(&device);
    FillPresets(&device);
  }
}

// ---- the model --------------------------------------------------------------

// The row that a query of the model gives.
template <class Row, class Query>
std::unique_ptr<Row> One(Query query) {
  Row* row = nullptr;
  Require(query(&row) == 0, "the query");
  return std::unique_ptr<Row>(row);
}

// The rows that a list query of the model gives.
template <class Row>
struct List {
  List() = default;
  List(List&& other) noexcept : rows(std::exchange(other.rows, {})) {}
  List& operator=(List&&) = delete;
  ~List() { VptzModel::CleanQuery(&rows); }

  std::vector<Row*> rows;
};

template <class Row, class Query>
List<Row> All(Query query) {
  List<Row> list;
  Require(query(&list.rows) == 0, "the query");
  return list;
}

// The statement by which the model does something, so that both sides run the
// same one.
template <class Action>
std::string SelectOf(const std::string& path, Action action) {
  static std::string select;
  const auto on_statement = [](unsigned, void*, void* statement, void*) {
    const std::string text = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
    if (text.compare(0, 6, "SELECT") == 0) select = text;
    return 0;
  };
  static int (*const trace)(unsigned, void*, void*, void*) = on_statement;
  const auto watch = [](sqlite3* connection, char**, const void*) {
    return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, trace, nullptr);
  };
  int (*const extension)(sqlite3*, char**, const void*) = watch;
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(extension));
  Require(VptzModel::Instance().Connect(path) == 0, "Connect");
  action();
  sqlite3_reset_auto_extension();
  Require(VptzModel::Instance().Connect(path) == 0, "Connect");
  return select;
}

// ---- measuring ----------------------------------------------------------------

// Times each query on its own; the median says more than the mean.
template <class Query>
void Measure(benchmark::State& state, Query query) {
  for (int i = 0; i < 50; ++i) query();
  std::vector<double> microseconds;
  microseconds.reserve(kQueriesEach);
  const std::size_t allocations_before = Allocations();
  for (auto _ : state) {
    const auto began = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(query());
    const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - began;
    microseconds.push_back(took.count());
  }
  const auto queries = static_cast<double>(microseconds.size());
  state.counters["allocations"] = static_cast<double>(Allocations() - allocations_before) / queries;
  std::sort(microseconds.begin(), microseconds.end());
  state.counters["p50_us"] = microseconds[microseconds.size() / 2];
}

struct Figures {
  double microseconds = 0;
  double allocations = 0;
};

// Prints as usual and remembers the medians.
class Reporter : public benchmark::ConsoleReporter {
 public:
  Reporter() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name != "median") continue;
      medians_[run.run_name.function_name] = {run.counters.at("p50_us"), run.counters.at("allocations")};
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Nothing for a query of which a filter left some ways out.
  void PrintTable(const std::vector<std::string>& queries) const {
    std::printf("\n%-26s %9s %11s %9s %11s %9s %9s\n", "query", "model us", "allocations", "once us",
                "allocations", "to once", "to each");
    for (const std::string& query : queries) {
      const auto model = medians_.find("model_" + query);
      const auto once = medians_.find("prepared_once_" + query);
      const auto each = medians_.find("prepared_each_time_" + query);
      if (model == medians_.end() || once == medians_.end() || each == medians_.end()) continue;
      std::printf("%-26s %9.2f %11.0f %9.2f %11.0f %9.2f %9.2f\n", query.c_str(), model->second.microseconds,
                  model->second.allocations, once->second.microseconds, once->second.allocations,
                  model->second.microseconds / once->second.microseconds,
                  model->second.microseconds / each->second.microseconds);
    }
  }

 private:
  std::map<std::string, Figures> medians_;
};

template <class Query>
void RegisterOne(const std::string& name, Query query) {
  benchmark::RegisterBenchmark(name.c_str(), [query](benchmark::State& state) { Measure(state, query); })
      ->Iterations(kQueriesEach)
      ->Repetitions(kRepetitions)
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
}

// Every query in its three ways.
class Queries {
 public:
  explicit Queries(const std::string& path) : path_(path), raw_(path) {}

  // A query for one row: as the model asks for it, and its values in the model's
  // statement.
  template <class Row, class RawRow, class Model, class Bind>
  void AddOne(const std::string& name, Model model, Bind bind) {
    Add(
        name, [model] { return One<Row>(model); },
        [this, bind](sqlite3_stmt* statement) {
          bind(statement);
          return raw_.First<RawRow>(statement);
        });
  }

  // A list query.
  template <class Row, class RawRow, class Model, class Bind>
  void AddList(const std::string& name, Model model, Bind bind) {
    Add(
        name, [model] { return All<Row>(model); },
        [this, bind](sqlite3_stmt* statement) {
          bind(statement);
          return raw_.All<RawRow>(statement);
        });
  }

  const std::vector<std::string>& names() const { return names_; }

 private:
  template <class Model, class Raw>
  void Add(const std::string& name, Model model, Raw raw) {
    const std::string select = SelectOf(path_, model);
    names_.push_back(name);
    RegisterOne("model_" + name, model);
    RegisterOne("prepared_each_time_" + name, [this, select, raw] { return raw(raw_.Prepare(select).get()); });
    const std::shared_ptr<sqlite3_stmt> once = raw_.Prepare(select);
    RegisterOne("prepared_once_" + name, [once, raw] { return raw(once.get()); });
  }

  const std::string path_;
  const RawConnection raw_;
  std::vector<std::string> names_;
};

void BindId(sqlite3_stmt* statement, int place, unsigned id) { sqlite3_bind_int64(statement, place, id); }

void BindText(sqlite3_stmt* statement, int place, const char* text) {
  sqlite3_bind_text(statement, place, text, -1, SQLITE_STATIC);
}

void AddQueriesForOne(Queries& queries) {
  queries.AddOne<Device, RawDevice>(
      "device_by_id", [](Device** row) { return Device::QueryById(row, 2); },
      [](sqlite3_stmt* statement) { BindId(statement, 1, 2); });
  queries.AddOne<MediaParameter, RawMediaParameter>(
      "parameter_by_id", [](MediaParameter** row) { return MediaParameter::QueryById(row, 20); },
      [](sqlite3_stmt* statement) { BindId(statement, 1, 20); });
  queries.AddOne<Protocol, RawProtocol>(
      "protocol_by_name", [](Protocol** row) { return Protocol::QueryByName(row, "ONVIF"); },
      [](sqlite3_stmt* statement) { BindText(statement, 1, "ONVIF"); });
  queries.AddOne<MediaParameter, RawMediaParameter>(
      "parameter_by_owner_and_name",
      [](MediaParameter** row) { return MediaParameter::QueryByName(row, 3, "parameter2"); },
      [](sqlite3_stmt* statement) {
        BindId(statement, 1, 3);
        BindText(statement, 2, "parameter2");
      });
  queries.AddOne<Media, RawMedia>(
      "media_by_node", [](Media** row) { return Media::QueryByNode(row, 2, "token2"); },
      [](sqlite3_stmt* statement) {
        BindId(statement, 1, 2);
        BindText(statement, 2, "token2");
      });
  queries.AddOne<Preset, RawPreset>(
      "preset_by_preset_id", [](Preset** row) { return Preset::QueryByPresetId(row, 2, 7); },
      [](sqlite3_stmt* statement) {
        BindId(statement, 1, 2);
        BindId(statement, 2, 7);
      });
}

void AddLists(Queries& queries) {
  queries.AddList<Preset, RawPreset>(
      "ten_presets_of_a_node", [](auto* rows) { return Preset::QueryByPtz(rows, 2, 0, 65535); },
      [](sqlite3_stmt* statement) { BindId(statement, 1, 2); });
  queries.AddList<Device, RawDevice>(
      "two_devices", [](auto* rows) { return Device::QueryAll(rows, 0, 65535); }, [](sqlite3_stmt*) {});
}

void Run(const std::string& path) {
  Require(VptzModel::Instance().Initialize(path, "vptz", "") == 0, "Initialize");
  Fill();
  Queries queries(path);
  AddQueriesForOne(queries);
  AddLists(queries);
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintTable(queries.names());
  benchmark::ClearRegisteredBenchmarks();
}

}  // namespace

int main(int count, char** arguments) {
  PinToOneProcessor();
  std::string interleave = "--benchmark_enable_random_interleaving=true";
  std::string aggregates = "--benchmark_report_aggregates_only=true";
  std::vector<char*> all(arguments, arguments + count);
  all.push_back(interleave.data());
  all.push_back(aggregates.data());
  int total = static_cast<int>(all.size());
  benchmark::Initialize(&total, all.data());
  const vptz_test::TempDir dir;
  Run(dir.path() + "/vptz.db");
  VptzModel::Instance().Release();
  return 0;
}
