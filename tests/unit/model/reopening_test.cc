// The database is opened anew or closed while operations of other threads run.
#include <vptz/model/event.h>
#include <vptz/model/preset.h>
#include <vptz/model/ptz.h>
#include <vptz/model/event-odb.hxx>

#include <limits.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <random>
#include <thread>
#include <utility>

#include "model/model_test.h"
#include "support/wait_until.h"

namespace {

using testing::ElementsAre;
using vptz_test::ById;
using vptz_test::OpenModelTest;
using vptz_test::RawDatabase;

// What runs once in the middle of an operation: SQLite calls it when a row is
// written.
std::function<void()> in_operation;

int Install(sqlite3* connection, char**, const void*) {
  sqlite3_update_hook(
      connection,
      [](void*, int, const char*, const char*, sqlite3_int64) {
        const auto body = std::exchange(in_operation, nullptr);
        if (body) body();
      },
      nullptr);
  return 0;
}

class ReopeningTest : public OpenModelTest {
 protected:
  ReopeningTest() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(Install));
    EXPECT_EQ(model().Connect(path), 0);
  }
  ~ReopeningTest() override {
    in_operation = nullptr;
    sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Install));
  }
};

TEST_F(ReopeningTest, AnOperationEndsInTheDatabaseThatItBeganWithThoughThatIsClosedMeanwhile) {
  in_operation = [this] { model().Release(); };
  Event event("kept", "whole");
  EXPECT_EQ(Event::Add(&event), 1);
  EXPECT_FALSE(model().IsConnected());
  EXPECT_EQ(raw.Value("SELECT name FROM event"), "'kept'");
}

TEST_F(ReopeningTest, AnOperationEndsInTheDatabaseThatItBeganWithThoughAnotherOneIsOpenedMeanwhile) {
  const std::string other = dir.path() + "/other.db";
  in_operation = [&] { std::thread([&] { EXPECT_EQ(model().Initialize(other, "vptz", ""), 0); }).join(); };
  Event event("kept", "whole");
  EXPECT_EQ(Event::Add(&event), 1);
  EXPECT_EQ(raw.Value("SELECT name FROM event"), "'kept'");
  EXPECT_EQ(RawDatabase(other).Value("SELECT count(*) FROM event"), "0");
  EXPECT_EQ(ById<Event>(1), nullptr) << "found in the other one";
}

TEST_F(ReopeningTest, WhatBeginsAfterTheEndFindsNoDatabaseUntilOneIsOpened) {
  Event event("name", "text");
  EXPECT_EQ(Event::Add(&event), 1);
  model().Release();
  log.lines.clear();
  EXPECT_EQ(ById<Event>(1), nullptr);
  EXPECT_THAT(Lines(), ElementsAre("0 Database exception! (no open database)"));
  EXPECT_EQ(model().Connect(path), 0);
  EXPECT_NE(ById<Event>(1), nullptr);
}

// The file is another one under the same name, so an operation that still uses the
// former one must not make the new one share it.
TEST_F(ReopeningTest, AFileThatHasTakenTheOldOnesPlaceIsReadThoughTheOldOneIsInUse) {
  const std::string next = dir.path() + "/next.db";
  EXPECT_EQ(model().Initialize(next, "vptz", ""), 0);
  RawDatabase(next).Execute("INSERT INTO event(name, message, reserved) VALUES ('new', '', '')");
  EXPECT_EQ(model().Connect(path), 0);
  in_operation = [&] {
    EXPECT_EQ(std::rename(next.c_str(), path.c_str()), 0);
    EXPECT_EQ(model().Connect(path), 0);
    std::string found;
    std::thread([&found] {
      const auto event = ById<Event>(1);
      if (event != nullptr) found = event->name();
    }).join();
    EXPECT_EQ(found, "new");
  };
  Event event("old", "");
  EXPECT_EQ(Event::Add(&event), 1);
  EXPECT_EQ(ById<Event>(1)->name(), "new");
}

TEST_F(ReopeningTest, InitializeWaitsUntilNothingUsesAFileThatItReplaces) {
  raw.Execute("UPDATE schema_version SET version = 3");
  std::atomic<bool> done{false};
  std::thread initializing;
  in_operation = [&] {
    initializing = std::thread([&] {
      EXPECT_EQ(Initialize(), 0);
      done = true;
    });
    EXPECT_TRUE(vptz_test::WaitUntil([this] { return !model().IsConnected(); }));
    EXPECT_FALSE(done);
  };
  Event event("worthless", "");
  EXPECT_EQ(Event::Add(&event), 1);
  initializing.join();
  EXPECT_EQ(RawDatabase(path).Value("SELECT count(*) FROM event"), "0");
}

// Closing this file takes long. How often that was done, and whether the file was
// removed meanwhile.
std::string closed_slowly;
std::atomic<int> closed{0};
std::atomic<bool> removed_before{false};

int SlowClose(int file) {
  char name[PATH_MAX] = {};
  if (readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), name, sizeof name - 1) > 0 &&
      closed_slowly == name) {
    ++closed;
    const auto removed = [&] { return access(name, F_OK) != 0; };
    if (vptz_test::WaitUntil(removed, std::chrono::milliseconds(200))) removed_before = true;
  }
  return close(file);
}

TEST_F(ReopeningTest, InitializeWaitsUntilAFileThatItReplacesIsClosed) {
  raw.Execute("UPDATE schema_version SET version = 3");
  closed_slowly = std::filesystem::canonical(path);
  closed = 0;
  removed_before = false;
  sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
  files->xSetSystemCall(files, "close", reinterpret_cast<sqlite3_syscall_ptr>(SlowClose));
  std::thread initializing;
  in_operation = [&] {
    initializing = std::thread([this] { EXPECT_EQ(Initialize(), 0); });
    EXPECT_TRUE(vptz_test::WaitUntil([this] { return !model().IsConnected(); }));
  };
  Event event("worthless", "");
  EXPECT_EQ(Event::Add(&event), 1);
  initializing.join();
  files->xSetSystemCall(files, "close", nullptr);
  EXPECT_GE(closed, 1);
  EXPECT_FALSE(removed_before);
}

// An object keeps the address of the database that it was read from.
TEST_F(ReopeningTest, AReferenceIsLoadedFromTheDatabaseThatIsOpenThen) {
  raw.Execute(
      "INSERT INTO ptz(id, node, is_enable, authorization, track_mode, reserved) VALUES (4, 'ptz0', 1, '', 0, "
      "'');"
      "INSERT INTO preset(id, ptz, preset_id, token, name, reserved) VALUES (9, 4, 1, '', '', '');");
  const auto preset = ById<Preset>(9);
  const auto orphan = ById<Preset>(9);
  ASSERT_NE(preset, nullptr);
  EXPECT_EQ(model().Connect(path), 0);
  ASSERT_NE(preset->ptz(), nullptr);
  EXPECT_EQ(preset->ptz()->node(), "ptz0");
  model().Release();
  EXPECT_NE(preset->ptz(), nullptr) << "it is loaded";
  EXPECT_EQ(orphan->ptz(), nullptr);
}

// ---- threads ----------------------------------------------------------------

// Without a recording log, which is for one thread.
class ReopeningThreadsTest : public testing::Test {
 protected:
  static constexpr int kThreads = 3;

  ReopeningThreadsTest() {
    EXPECT_EQ(VptzModel::Instance().Initialize(path, "vptz", ""), 0);
    Event event("there", "");
    EXPECT_EQ(Event::Add(&event), 1);
  }
  ~ReopeningThreadsTest() override { VptzModel::Instance().Release(); }

  // Runs the bodies side by side, each again and again, until the first has run
  // `rounds` times.
  static void RunTogether(int rounds, const std::function<void()>& first,
                          const std::vector<std::function<void()>>& others) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    threads.reserve(others.size());
    for (const auto& body : others) {
      threads.emplace_back([&] {
        while (!stop) body();
      });
    }
    for (int i = 0; i < rounds; ++i) first();
    stop = true;
    for (std::thread& thread : threads) thread.join();
  }

  vptz_test::TempDir dir;
  const std::string path = dir.path() + "/vptz.db";
};

TEST_F(ReopeningThreadsTest, OpeningAnewCostsNoOtherThreadAnOperation) {
  std::atomic<int> done{0};
  std::atomic<int> lost{0};
  const auto read = [&] {
    const auto event = ById<Event>(1);
    ++(event != nullptr && event->name() == "there" ? done : lost);
    if (!VptzModel::Instance().IsConnected() || VptzModel::Instance().SchemaVersion("vptz") != 10) ++lost;
  };
  const auto open = [this] { EXPECT_EQ(VptzModel::Instance().Connect(path), 0); };
  RunTogether(200, open, std::vector<std::function<void()>>(kThreads, read));
  RunTogether(
      20, [this] { EXPECT_EQ(VptzModel::Instance().Initialize(path, "vptz", ""), 0); },
      std::vector<std::function<void()>>(kThreads, read));
  EXPECT_GT(done, 0);
  EXPECT_EQ(lost, 0);
}

TEST_F(ReopeningThreadsTest, OpeningAndClosingAtRandomHarmsNoOperation) {
  std::atomic<int> added{1};
  std::atomic<int> number{0};
  const auto write = [&] {
    Event event("event " + std::to_string(++number), "");
    const int id = Event::Add(&event);
    if (id > 0) ++added;
    Event* read = nullptr;
    if (id > 0 && Event::QueryById(&read, static_cast<unsigned>(id)) == 0) {
      EXPECT_EQ(read->name(), event.name());
    }
    delete read;
  };
  std::mt19937 random(4711);
  const auto change = [&] {
    VptzModel& model = VptzModel::Instance();
    switch (random() % 4) {
      case 0:
        model.Release();
        EXPECT_FALSE(model.IsConnected());
        break;
      case 1:
        EXPECT_EQ(model.Connect(dir.path() + "/missing.db"), -1);
        break;
      default:
        EXPECT_EQ(model.Connect(path), 0);
    }
    vptz_test::Breathe();
  };
  RunTogether(300, change, {write, write, write});
  RawDatabase raw(path);
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), std::to_string(added));
  EXPECT_EQ(raw.Value("PRAGMA integrity_check"), "'ok'");
}

}  // namespace
