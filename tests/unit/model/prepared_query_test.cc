// The queries of the entity classes are prepared once for each connection, and
// otherwise behave as if they were prepared each time.
#include <vptz/model/device.h>
#include <vptz/model/event.h>
#include <vptz/model/event_information.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/setting.h>

#include <odb/sqlite/database.hxx>
#include <odb/transaction.hxx>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <thread>

#include "model/model_test.h"
#include "model/schema_statements.h"
#include "model/statement_watch.h"
#include "support/wait_until.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vptz_test::ById;
using vptz_test::ModelTest;
using vptz_test::OpenModelTest;
using vptz_test::RawDatabase;
using vptz_test::Rows;

constexpr unsigned kAll = 65535;

// The object that a query for one row gives, whatever it is; null when it fails.
template <class Row, class Query>
std::unique_ptr<Row> One(Query query) {
  Row* row = nullptr;
  const int result = query(&row);
  EXPECT_EQ(result, row == nullptr ? -1 : 0);
  return std::unique_ptr<Row>(row);
}

std::unique_ptr<Event> ByName(const std::string& name) {
  return One<Event>([&](Event** event) { return Event::QueryByName(event, name); });
}

int CountEvents() {
  Rows<Event> events;
  Event::QueryAll(&events, 0, kAll);
  return static_cast<int>(events.size());
}

// ---- the statements -----------------------------------------------------------

// The statements that read something, as they are run.
class StatementsTest : public ModelTest {
 protected:
  StatementsTest() {
    MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
    EXPECT_EQ(Initialize(), 0);
    log.lines.clear();
  }

  // How many statements there are in the connections that have read something.
  int CountStatements() const {
    int count = 0;
    for (sqlite3* const connection : connections) {
      sqlite3_stmt* statement = nullptr;
      while ((statement = sqlite3_next_stmt(connection, statement)) != nullptr) ++count;
    }
    return count;
  }

  std::set<sqlite3*> connections;
  std::map<std::string, int> runs;  // of each text: how often its last statement has been run
  vptz_test::StatementWatch watch{[this](sqlite3_stmt* statement) {
    const std::string text = sqlite3_sql(statement);
    if (text.compare(0, 6, "SELECT") != 0) return;
    connections.insert(sqlite3_db_handle(statement));
    runs[text] = sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_RUN, 0) + 1;  // this one included
  }};
};

// What every class has.
template <class Row>
void QueryCommonly(unsigned id) {
  ById<Row>(id);
  Rows<Row> rows;
  Row::QueryAll(&rows, 0, kAll);
}

// All queries of all classes, with values that depend on the number.
void QueryEverything(unsigned number) {
  const std::string text(number % 40, 'x');
  QueryCommonly<DeviceType>(number);
  QueryCommonly<Protocol>(number);
  QueryCommonly<Device>(number);
  QueryCommonly<Media>(number);
  QueryCommonly<MediaParameter>(number);
  QueryCommonly<Movement>(number);
  QueryCommonly<MovementParameter>(number);
  QueryCommonly<Ptz>(number);
  QueryCommonly<Preset>(number);
  QueryCommonly<Event>(number);
  QueryCommonly<EventInformation>(number);
  One<DeviceType>([&](DeviceType** row) { return DeviceType::QueryByName(row, text); });
  One<Protocol>([&](Protocol** row) { return Protocol::QueryByName(row, text); });
  ByName(text);
  One<Setting>([&](Setting** row) { return Setting::Query(text, row); });
  One<Device>([&](Device** row) { return Device::QueryByServiceUri(row, text); });
  One<Media>([&](Media** row) { return Media::QueryByNode(row, number, text); });
  One<MediaParameter>([&](MediaParameter** row) { return MediaParameter::QueryByName(row, number, text); });
  One<MovementParameter>(
      [&](MovementParameter** row) { return MovementParameter::QueryByName(row, number, text); });
  One<Ptz>([&](Ptz** row) { return Ptz::QueryByNode(row, number, text); });
  One<Preset>([&](Preset** row) { return Preset::QueryByPresetId(row, number, number); });
  One<Preset>([&](Preset** row) { return Preset::QueryByToken(row, number, text); });
  Rows<Device> devices;
  Device::QueryByMac(&devices, text, 0, kAll);
  Device::QueryByDeviceType(&devices, number, 0, kAll);
  Device::QueryByProtocol(&devices, number, 0, kAll);
  Device::QueryByAuthorized(&devices, number % 2 == 0, 0, kAll);
  Device::QueryCount();
  Media::QueryCountByDevice(number);
  Ptz::QueryCountByDevice(number);
  Preset::QueryCountByPtz(number);
  Preset::QueryMaxPresetIdByPtz(number);
}

TEST_F(StatementsTest, AQueryRunsTheStatementThatTheConnectionHasPreparedBefore) {
  ById<Protocol>(1);  // the connection knows the schema from here on
  runs.clear();
  for (unsigned i = 0; i < 50; ++i) ByName("name " + std::to_string(i));
  EXPECT_THAT(runs, ElementsAre(testing::Pair(testing::_, 50)));
  runs.clear();
  for (unsigned i = 0; i < 50; ++i) ById<Event>(i);
  EXPECT_THAT(runs, ElementsAre(testing::Pair(testing::_, 50)));
  runs.clear();
  for (unsigned i = 0; i < 50; ++i) CountEvents();
  EXPECT_THAT(runs, ElementsAre(testing::Pair(testing::_, 50)));
}

TEST_F(StatementsTest, AConnectionKeepsNoMoreStatementsThanThereAreQueries) {
  QueryEverything(0);
  const int after_once = CountStatements();
  EXPECT_GT(after_once, 30);
  EXPECT_LE(after_once, 50);
  for (unsigned i = 1; i < 100; ++i) QueryEverything(i);
  EXPECT_EQ(CountStatements(), after_once);
  EXPECT_THAT(connections, SizeIs(1));
}

TEST_F(StatementsTest, EachExecutionAsksForItsOwnValues) {
  const std::string long_text(3000, 'n');
  RawDatabase(path).Execute("INSERT INTO event(name, message, reserved) VALUES ('" + long_text +
                            "', 'long', ''), ('', 'empty', ''), ('a', 'short', '')");
  const auto message = [](const std::string& name) {
    const auto event = ByName(name);
    return event == nullptr ? "none" : event->message();
  };
  EXPECT_EQ(message("a"), "short");
  EXPECT_EQ(message(long_text), "long");
  EXPECT_EQ(message("a"), "short");
  EXPECT_EQ(message(""), "empty");
  EXPECT_EQ(message(long_text + "n"), "none");
  EXPECT_EQ(message(std::string("a\0b", 3)), "none");
  EXPECT_EQ(message("lost"), "it's gone");
}

TEST_F(StatementsTest, WhatIsWrittenBetweenTwoExecutionsIsRead) {
  EXPECT_EQ(ByName("lost")->message(), "it's gone");
  RawDatabase(path).Execute("UPDATE event SET message = 'back again'");
  EXPECT_EQ(ByName("lost")->message(), "back again");
  RawDatabase(path).Execute("DELETE FROM event");
  EXPECT_EQ(ByName("lost"), nullptr);
}

// ---- queries inside of queries ------------------------------------------------

TEST_F(StatementsTest, AQueryMayRunAgainForEachRowOfItsOwnResult) {
  Rows<Device> devices;
  ASSERT_EQ(Device::QueryAll(&devices, 0, kAll), 0);
  std::vector<std::string> found;
  for (const Device* outer : devices) {
    Rows<Device> again;
    ASSERT_EQ(Device::QueryAll(&again, 0, kAll), 0);
    for (const Device* inner : again) {
      found.push_back(outer->address() + " " + ById<Device>(inner->id())->protocol()->name());
      EXPECT_EQ(Device::QueryCount(), 2);
    }
  }
  EXPECT_THAT(found, ElementsAre("10.0.0.3 ONVIF", "10.0.0.3 RS232", "a ONVIF", "a RS232"));
}

TEST_F(StatementsTest, ReferencesOfARowAreLoadedWhileOthersOfItsClassAreRead) {
  Rows<EventInformation> information;
  ASSERT_EQ(EventInformation::QueryAll(&information, 0, kAll), 0);
  ASSERT_THAT(information, SizeIs(2));
  const Media* const media = information[0]->media();
  ASSERT_NE(media, nullptr);
  EXPECT_EQ(media->device()->protocol()->name(), "ONVIF");
  EXPECT_EQ(ById<Media>(1)->device()->protocol()->name(), "ONVIF");
  EXPECT_EQ(information[0]->ptz()->device()->host_name(), "hall");
  EXPECT_EQ(information[0]->event()->name(), "lost");
  EXPECT_EQ(information[1]->event(), nullptr);
  EXPECT_THAT(log.lines, IsEmpty());
}

// The mapper has one transaction for each thread.
TEST_F(StatementsTest, AQueryInsideATransactionOfTheCallersFailsAndLeavesItAlone) {
  const std::string other = dir.path() + "/other.db";
  RawDatabase(other).Execute("CREATE TABLE kept(id INTEGER)");
  odb::sqlite::database own(other);
  EXPECT_NE(ByName("lost"), nullptr);
  {
    odb::transaction transaction(own.begin());
    own.execute("INSERT INTO kept VALUES (1)");
    EXPECT_EQ(ByName("lost"), nullptr);
    EXPECT_EQ(ById<Event>(1), nullptr);
    EXPECT_EQ(CountEvents(), 0);
    EXPECT_EQ(&odb::transaction::current(), &transaction);
    transaction.commit();
  }
  EXPECT_THAT(Lines(),
              testing::AllOf(SizeIs(3),
                             testing::Each(std::string(
                                 "0 Database exception! (transaction already in progress in this thread)"))));
  EXPECT_EQ(RawDatabase(other).Value("SELECT count(*) FROM kept"), "1");
  EXPECT_NE(ByName("lost"), nullptr);
}

// ---- another program changes the schema ---------------------------------------

class SchemaChangeTest : public OpenModelTest {
 protected:
  SchemaChangeTest() {
    raw.Execute("INSERT INTO event(name, message, reserved) VALUES ('lost', 'gone', '')");
    EXPECT_EQ(Message(), "gone");
    log.lines.clear();
  }

  // What all kinds of query find of the only event, when they agree.
  static std::string Message() {
    const auto event = ByName("lost");
    const auto same = ById<Event>(1);
    Rows<Event> events;
    Event::QueryAll(&events, 0, kAll);
    EXPECT_EQ(event == nullptr, same == nullptr);
    EXPECT_EQ(event == nullptr, events.empty());
    if (event == nullptr || same == nullptr || events.empty()) return "none";
    EXPECT_EQ(same->message(), event->message());
    EXPECT_EQ(events[0]->message(), event->message());
    return event->message();
  }
};

TEST_F(SchemaChangeTest, AColumnMore) {
  raw.Execute("ALTER TABLE event ADD COLUMN more TEXT");
  EXPECT_EQ(Message(), "gone");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(SchemaChangeTest, ColumnsInAnotherOrder) {
  raw.Execute(
      "BEGIN; DROP TABLE event;"
      "CREATE TABLE event(reserved TEXT, message TEXT, name TEXT, id INTEGER PRIMARY KEY);"
      "INSERT INTO event VALUES ('', 'found', 'lost', 1); COMMIT;");
  EXPECT_EQ(Message(), "found");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(SchemaChangeTest, AnIndexThatComesAndGoes) {
  raw.Execute("CREATE INDEX by_message ON event(message, name)");
  EXPECT_EQ(Message(), "gone");
  raw.Execute("DROP INDEX by_message; VACUUM");
  EXPECT_EQ(Message(), "gone");
}

TEST_F(SchemaChangeTest, ATableThatIsMissingForAWhile) {
  raw.Execute("ALTER TABLE event RENAME TO hidden");
  EXPECT_EQ(Message(), "none");
  EXPECT_THAT(
      Lines(),
      testing::AllOf(SizeIs(3), testing::Each(std::string("0 Database exception! (1: no such table: event)"))));
  log.lines.clear();
  raw.Execute("ALTER TABLE hidden RENAME TO event");
  EXPECT_EQ(Message(), "gone");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(SchemaChangeTest, AColumnThatIsMissingForAWhile) {
  raw.Execute("ALTER TABLE event RENAME COLUMN message TO hidden");
  EXPECT_EQ(Message(), "none");
  EXPECT_THAT(
      Lines(),
      testing::AllOf(SizeIs(3),
                     testing::Each(std::string("0 Database exception! (1: no such column: event.message)"))));
  raw.Execute("ALTER TABLE event RENAME COLUMN hidden TO message");
  EXPECT_EQ(Message(), "gone");
}

// ---- opening and closing ------------------------------------------------------

// How often the process has files of that folder open.
int OpenFilesIn(const std::string& folder) {
  int count = 0;
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(descriptor, gone).string().rfind(folder + "/", 0) == 0) ++count;
  }
  return count;
}

TEST_F(ModelTest, WhatHasBeenPreparedKeepsNoFileOpen) {
  ASSERT_EQ(Initialize(), 0);
  QueryEverything(1);
  std::thread(QueryEverything, 2).join();
  EXPECT_GT(OpenFilesIn(dir.path()), 0);
  model().Release();
  EXPECT_EQ(OpenFilesIn(dir.path()), 0);
}

TEST_F(ModelTest, APreparedQueryAsksTheDatabaseThatIsOpenNow) {
  const std::string other = dir.path() + "/other.db";
  for (const std::string& file : {path, other}) {
    ASSERT_EQ(model().Initialize(file, "vptz", ""), 0);
    Event event("where", file);
    EXPECT_EQ(Event::Add(&event), 1);
  }
  for (int i = 0; i < 10; ++i) {
    const std::string& file = i % 2 == 0 ? path : other;
    EXPECT_EQ(model().Connect(file), 0);
    EXPECT_EQ(ByName("where")->message(), file);
    EXPECT_EQ(ById<Event>(1)->message(), file);
    EXPECT_EQ(CountEvents(), 1);
  }
}

// Without a recording log, which is for one thread.
class PreparedInThreadsTest : public testing::Test {
 protected:
  static constexpr int kThreads = 3;

  PreparedInThreadsTest() {
    EXPECT_EQ(VptzModel::Instance().Initialize(path, "vptz", ""), 0);
    for (const char* name : {"first", "second"}) {
      Event event(name, std::string("text of ") + name);
      EXPECT_GT(Event::Add(&event), 0);
    }
  }
  ~PreparedInThreadsTest() override { VptzModel::Instance().Release(); }

  // Whether the queries give what is stored, or nothing when that is allowed.
  bool ReadsWell(bool closed_at_times) const {
    const auto event = ByName("second");
    const auto same = ById<Event>(2);
    const int count = CountEvents();
    if (event == nullptr || same == nullptr || count == 0) return closed_at_times;
    return event->message() == "text of second" && same->message() == event->message() && count == 2;
  }

  // Runs `change` that many times while threads read.
  int CountWrong(int rounds, bool closed_at_times, const std::function<void(int)>& change) {
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::atomic<int> reads{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        while (!stop) {
          if (!ReadsWell(closed_at_times)) ++wrong;
          ++reads;
        }
      });
    }
    for (int i = 0; i < rounds; ++i) {
      const int before = reads;
      change(i);
      EXPECT_TRUE(vptz_test::WaitUntil([&] { return reads > before; }));
    }
    stop = true;
    for (std::thread& thread : threads) thread.join();
    return wrong;
  }

  vptz_test::TempDir dir;
  const std::string path = dir.path() + "/vptz.db";
};

TEST_F(PreparedInThreadsTest, EveryThreadReadsWhatIsStoredWhileTheFileIsOpenedAnew) {
  EXPECT_EQ(CountWrong(100, false, [&](int) { EXPECT_EQ(VptzModel::Instance().Connect(path), 0); }), 0);
}

TEST_F(PreparedInThreadsTest, NothingReadsThroughAConnectionThatIsClosed) {
  const auto change = [&](int round) {
    VptzModel::Instance().Release();
    if (round % 3 == 0) return;
    EXPECT_EQ(VptzModel::Instance().Connect(path), 0);
  };
  EXPECT_EQ(CountWrong(200, true, change), 0);
  VptzModel::Instance().Release();
  EXPECT_EQ(OpenFilesIn(dir.path()), 0);
}

TEST_F(PreparedInThreadsTest, EveryThreadReadsWhatIsStoredWhileAnotherProgramChangesTheSchema) {
  RawDatabase raw(path);
  raw.Execute("PRAGMA busy_timeout = 60000");
  const auto change = [&](int round) {
    raw.Execute(round % 2 == 0 ? "CREATE INDEX by_message ON event(message)" : "DROP INDEX by_message");
  };
  EXPECT_EQ(CountWrong(50, false, change), 0);
}

}  // namespace
