// One query by id and one by owner and name, through the model and through
// SQLite's own interface, in one run on one processor.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <vptz/model/media.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/vptzmodel.h>

#include "allocations.h"
#include "support/temp_dir.h"

namespace {

constexpr int kRepetitions = 15;
constexpr int kQueriesEach = 3000;

// As many as the service writes for two cameras.
constexpr int kMedia = 4;
constexpr int kParametersEach = 9;

constexpr unsigned kId = 20;
constexpr unsigned kOwner = 3;
constexpr char kName[] = "parameter2";

void PinToOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  if (sched_setaffinity(0, sizeof one, &one) != 0) std::perror("sched_setaffinity");
}

void Require(bool done, const std::string& what) {
  if (!done) throw std::runtime_error(what + " failed");
}

void Fill() {
  for (int i = 1; i <= kMedia; ++i) {
    Media media(nullptr, "token" + std::to_string(i), "rtsp://192.0.2.1/main", "", true);
    Require(Media::Add(&media) == i, "adding a media source");
    for (int k = 1; k <= kParametersEach; ++k) {
      MediaParameter parameter(&media, "parameter" + std::to_string(k), k, 0, 100);
      Require(MediaParameter::Add(&parameter) > 0, "adding a parameter");
    }
  }
}

// ---- the model --------------------------------------------------------------

std::unique_ptr<MediaParameter> ModelById() {
  MediaParameter* row = nullptr;
  Require(MediaParameter::QueryById(&row, kId) == 0, "the query");
  return std::unique_ptr<MediaParameter>(row);
}

std::unique_ptr<MediaParameter> ModelByName() {
  MediaParameter* row = nullptr;
  Require(MediaParameter::QueryByName(&row, kOwner, kName) == 0, "the query");
  return std::unique_ptr<MediaParameter>(row);
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

// ---- SQLite's own interface ---------------------------------------------------

struct Row {
  std::uint32_t id;
  std::uint32_t media;
  std::string name;
  double value;
  double min;
  double max;
  std::string reserved;
};

struct Finalizer {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

// An open connection, its references checked as the model's are. BEGIN and
// COMMIT are prepared once, as the mapper does.
class Raw {
 public:
  explicit Raw(const std::string& path) {
    Require(sqlite3_open_v2(path.c_str(), &connection_, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK, path);
    sqlite3_exec(connection_, "PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
    begin_ = Prepare("BEGIN");
    commit_ = Prepare("COMMIT");
  }
  ~Raw() {
    begin_.reset();
    commit_.reset();
    sqlite3_close(connection_);
  }
  Raw(const Raw&) = delete;
  Raw& operator=(const Raw&) = delete;

  Statement Prepare(const std::string& text) const {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(connection_, text.c_str(), -1, &statement, nullptr) == SQLITE_OK, text);
    return Statement(statement);
  }

  // The first row of a query, in a transaction of its own.
  template <class Bind>
  std::unique_ptr<Row> First(sqlite3_stmt* query, Bind bind) const {
    Run(begin_.get());
    bind(query);
    Require(sqlite3_step(query) == SQLITE_ROW, "the query");
    auto row = std::make_unique<Row>(Row{Id(query, 0), Id(query, 1), Text(query, 2), Real(query, 3),
                                         Real(query, 4), Real(query, 5), Text(query, 6)});
    sqlite3_reset(query);
    Run(commit_.get());
    return row;
  }

 private:
  static void Run(sqlite3_stmt* statement) {
    Require(sqlite3_step(statement) == SQLITE_DONE, "the transaction");
    sqlite3_reset(statement);
  }
  static std::uint32_t Id(sqlite3_stmt* row, int column) {
    return static_cast<std::uint32_t>(sqlite3_column_int64(row, column));
  }
  static double Real(sqlite3_stmt* row, int column) { return sqlite3_column_double(row, column); }
  static std::string Text(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
  }

  sqlite3* connection_ = nullptr;
  Statement begin_;
  Statement commit_;
};

void BindId(sqlite3_stmt* query) { sqlite3_bind_int64(query, 1, kId); }

void BindName(sqlite3_stmt* query) {
  sqlite3_bind_int64(query, 1, kOwner);
  sqlite3_bind_text(query, 2, kName, -1, SQLITE_STATIC);
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

// Prints as usual and remembers the medians.
class Reporter : public benchmark::ConsoleReporter {
 public:
  Reporter() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") medians_[run.run_name.function_name] = run.counters.at("p50_us");
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios(const std::string& query) const {
    const auto model = medians_.find("model_" + query);
    if (model == medians_.end()) return;
    std::printf("\n%s: median %.2f us through the model\n", query.c_str(), model->second);
    for (const char* way : {"prepared_each_time", "prepared_once"}) {
      const double raw = medians_.at(std::string(way) + "_" + query);
      std::printf("  %.2f times the raw interface, statement %s (%.2f us)\n", model->second / raw, way, raw);
    }
  }

 private:
  std::map<std::string, double> medians_;
};

template <class Query>
void Register(const std::string& name, Query query) {
  benchmark::RegisterBenchmark(name.c_str(), [query](benchmark::State& state) { Measure(state, query); })
      ->Iterations(kQueriesEach)
      ->Repetitions(kRepetitions)
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
}

template <class Model, class Bind>
void RegisterWays(const std::string& name, const Raw& raw, const std::string& select, Model model, Bind bind) {
  Register("model_" + name, model);
  Register("prepared_each_time_" + name,
           [&raw, select, bind] { return raw.First(raw.Prepare(select).get(), bind); });
  const std::shared_ptr<sqlite3_stmt> once = raw.Prepare(select);
  Register("prepared_once_" + name, [&raw, once, bind] { return raw.First(once.get(), bind); });
}

void Run(const std::string& path) {
  Require(VptzModel::Instance().Initialize(path, "vptz", "") == 0, "Initialize");
  Fill();
  const Raw raw(path);
  RegisterWays("by_id", raw, SelectOf(path, ModelById), ModelById, BindId);
  RegisterWays("by_owner_and_name", raw, SelectOf(path, ModelByName), ModelByName, BindName);
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios("by_id");
  reporter.PrintRatios("by_owner_and_name");
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
