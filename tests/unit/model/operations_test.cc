// The operations on rows, on Event as an example of a class.
#include <vptz/model/event_information.h>
#include <vptz/model/preset.h>
#include <vptz/model/setting.h>
#include <vptz/model/event-odb.hxx>

#include "model/model_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using vptz_test::ById;
using vptz_test::ModelTest;
using vptz_test::OpenModelTest;
using vptz_test::Rows;

using Query = odb::query<Event>;

class OperationsTest : public OpenModelTest {
 protected:
  int AddEvent(const std::string& name) {
    Event event(name, "text of " + name);
    return Event::Add(&event);
  }
};

// ---- Add, Update, Erase -----------------------------------------------------

TEST_F(OperationsTest, AddGivesTheObjectItsId) {
  Event event("lost", "gone");
  EXPECT_EQ(event.id(), 0u);
  EXPECT_EQ(VptzModel::Add(&event), 1);
  EXPECT_EQ(event.id(), 1u);
  EXPECT_EQ(raw.Value("SELECT * FROM event"), "1|'lost'|'gone'|''");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(OperationsTest, AnAddThatFailsIsLoggedAndChangesNothing) {
  AddEvent("lost");
  EXPECT_EQ(AddEvent("lost"), -1);
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 VptzModel::Add: Exception occurs! (")));
  EXPECT_EQ(log.lines[0].file, "../src/model/vptzmodel.h");
  EXPECT_EQ(log.lines[0].function, "Add");
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "1");
}

TEST_F(OperationsTest, UpdateWritesAllMembers) {
  AddEvent("first");
  AddEvent("second");
  const auto event = ById<Event>(2);
  ASSERT_NE(event, nullptr);
  event->set_name("renamed");
  event->set_message("new text");
  event->set_reserved("used");
  EXPECT_EQ(VptzModel::Update(*event), 0);
  EXPECT_THAT(raw.Rows("SELECT * FROM event ORDER BY id"),
              ElementsAre("1|'first'|'text of first'|''", "2|'renamed'|'new text'|'used'"));
}

TEST_F(OperationsTest, UpdateOfARowThatIsNotThereFails) {
  Event event("lost", "");
  event.set_id(5);
  EXPECT_EQ(VptzModel::Update(event), -1);
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 VptzModel::Update: Exception occurs! (")));
}

TEST_F(OperationsTest, EraseDeletesEveryMatchingRow) {
  AddEvent("a");
  AddEvent("b");
  AddEvent("c");
  EXPECT_EQ(VptzModel::Erase<Event>(Query::name != "b"), 0);
  EXPECT_THAT(raw.Rows("SELECT name FROM event"), ElementsAre("'b'"));
}

TEST_F(OperationsTest, EraseThatMatchesNothingFailsAndLogsNothing) {
  AddEvent("a");
  EXPECT_EQ(VptzModel::Erase<Event>(Query::name == "b"), -1);
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "1");
}

// ---- QueryObject ------------------------------------------------------------

TEST_F(OperationsTest, QueryObjectGivesTheFirstMatch) {
  AddEvent("a");
  AddEvent("b");
  Event* event = nullptr;
  EXPECT_EQ(VptzModel::QueryObject<Event>(Query() + "ORDER BY" + Query::name + "DESC", &event), 0);
  const std::unique_ptr<Event> owner(event);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->name(), "b");
  EXPECT_EQ(event->id(), 2u);
}

TEST_F(OperationsTest, QueryObjectReplacesAnObject) {
  AddEvent("a");
  Event* event = new Event("before", "");
  EXPECT_EQ(Event::QueryById(&event, 1), 0);
  const std::unique_ptr<Event> owner(event);
  EXPECT_EQ(event->name(), "a");
}

TEST_F(OperationsTest, QueryObjectWithoutAMatchGivesNullAndSaysSo) {
  Event* event = new Event("before", "");
  EXPECT_EQ(Event::QueryById(&event, 1), -1);
  EXPECT_EQ(event, nullptr);
  EXPECT_THAT(Lines(), ElementsAre("3 VptzModel::QueryObject: Empty result!"));
  EXPECT_EQ(log.lines[0].file, "../src/model/vptzmodel.h");
  EXPECT_EQ(log.lines[0].function, "QueryObject");
}

TEST_F(OperationsTest, QueryObjectThatFailsIsLogged) {
  raw.Execute("DROP TABLE event");
  Event* event = new Event("before", "");
  EXPECT_EQ(Event::QueryById(&event, 1), -1);
  EXPECT_EQ(event, nullptr);
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 Database exception! (")));
}

// ---- QueryObjects -----------------------------------------------------------

TEST_F(OperationsTest, QueryObjectsAppendsInTheOrderOfTheQuery) {
  AddEvent("a");
  AddEvent("b");
  Rows<Event> events;
  events.push_back(new Event("before", ""));
  EXPECT_EQ(VptzModel::QueryObjects<Event>(Query() + "ORDER BY" + Query::name + "DESC", &events), 0);
  ASSERT_THAT(events, SizeIs(3));
  EXPECT_EQ(events[0]->name(), "before");
  EXPECT_EQ(events[1]->name(), "b");
  EXPECT_EQ(events[2]->name(), "a");
}

TEST_F(OperationsTest, QueryObjectsWithoutAMatchFailsOnlyWhenTheVectorStaysEmpty) {
  Rows<Event> events;
  EXPECT_EQ(VptzModel::QueryObjects<Event>(Query(), &events), -1);
  EXPECT_THAT(events, IsEmpty());
  events.push_back(new Event("before", ""));
  EXPECT_EQ(VptzModel::QueryObjects<Event>(Query(), &events), 0);
  EXPECT_THAT(events, SizeIs(1));
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(OperationsTest, QueryObjectsThatFailsEmptiesTheVector) {
  raw.Execute("DROP TABLE event");
  Rows<Event> events;
  events.push_back(new Event("before", ""));
  EXPECT_EQ(VptzModel::QueryObjects<Event>(Query(), &events), -1);
  EXPECT_THAT(events, IsEmpty());
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 Database exception! (")));
  EXPECT_EQ(log.lines[0].function, "QueryObjects");
}

TEST_F(OperationsTest, CleanQueryEmptiesTheVectorButNotTheTable) {
  AddEvent("a");
  Rows<Event> events;
  EXPECT_EQ(Event::QueryAll(&events, 0, 65535), 0);
  VptzModel::CleanQuery(&events);
  EXPECT_THAT(events, IsEmpty());
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "1");
}

// ---- AddAll -----------------------------------------------------------------

TEST_F(OperationsTest, AddAllAddsInOrderAndGivesIds) {
  Preset presets[] = {Preset(nullptr, 5, "t5", "five", 1, 2, 3), Preset(nullptr, 4, "t4", "four", 4, 5, 6)};
  EXPECT_EQ(Preset::AddAll(presets, 2), 0);
  EXPECT_EQ(presets[0].id(), 1u);
  EXPECT_EQ(presets[1].id(), 2u);
  EXPECT_THAT(raw.Rows("SELECT id, preset_id FROM preset ORDER BY id"), ElementsAre("1|5", "2|4"));
}

TEST_F(OperationsTest, AddAllOfNothingSucceeds) {
  EXPECT_EQ(Preset::AddAll(nullptr, 0), 0);
  EXPECT_EQ(Preset::AddAll(nullptr, -3), 0);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(OperationsTest, AddAllAddsAllOrNone) {
  raw.Execute(
      "CREATE TRIGGER refuse BEFORE INSERT ON preset WHEN NEW.preset_id = 3 "
      "BEGIN SELECT RAISE(ABORT, 'refused'); END");
  Preset presets[3];
  for (unsigned int i = 0; i < 3; ++i) presets[i].set_preset_id(i + 1);
  presets[1].set_id(77);
  EXPECT_EQ(Preset::AddAll(presets, 3), -1);
  EXPECT_EQ(raw.Value("SELECT count(*) FROM preset"), "0");
  EXPECT_EQ(presets[0].id(), 0u);
  EXPECT_EQ(presets[1].id(), 77u);
  EXPECT_THAT(Lines(), ElementsAre(testing::AllOf(StartsWith("0 VptzModel::Add: Exception occurs! ("),
                                                  testing::HasSubstr("refused"))));
}

// ---- no open database -------------------------------------------------------

using ClosedModelTest = ModelTest;

TEST_F(ClosedModelTest, EveryOperationFailsWithItsMessage) {
  Event event("name", "text");
  Event* found = new Event("before", "");
  Rows<Event> events;
  events.push_back(new Event("before", ""));
  EXPECT_EQ(Event::Add(&event), -1);
  EXPECT_EQ(Event::Update(event), -1);
  EXPECT_EQ(Event::Remove(1), -1);
  EXPECT_EQ(Event::QueryById(&found, 1), -1);
  EXPECT_EQ(Event::QueryAll(&events, 0, 65535), -1);
  EXPECT_EQ(Preset::AddAll(nullptr, 0), -1);
  EXPECT_EQ(found, nullptr);
  EXPECT_THAT(events, IsEmpty());
  EXPECT_THAT(Lines(), ElementsAre("0 VptzModel::Add: Exception occurs! (no open database)",
                                   "0 VptzModel::Update: Exception occurs! (no open database)",
                                   "0 VptzModel::Erase: Exception occurs! (no open database)",
                                   "0 Database exception! (no open database)",
                                   "0 Database exception! (no open database)",
                                   "0 VptzModel::Add: Exception occurs! (no open database)"));
}

TEST_F(ClosedModelTest, CountsAreZeroAndTheMaximumIsNone) {
  EXPECT_EQ(Preset::QueryCountByPtz(1), 0);
  EXPECT_EQ(Preset::QueryMaxPresetIdByPtz(1), static_cast<unsigned int>(-1));
}

TEST_F(ClosedModelTest, AReferenceCannotBeLoaded) {
  ASSERT_EQ(Initialize(), 0);
  Event event("name", "text");
  EXPECT_EQ(Event::Add(&event), 1);
  EventInformation information(nullptr, nullptr, 0, &event);
  EXPECT_EQ(EventInformation::Add(&information), 1);
  const auto stored = ById<EventInformation>(1);
  ASSERT_NE(stored, nullptr);
  model().Release();
  log.lines.clear();
  EXPECT_EQ(stored->event(), nullptr);
  EXPECT_THAT(Lines(), ElementsAre("0 VptzModel::LoadLazyPtr: Exception occurs! (no open database)"));

  // And it can again once a database is open.
  EXPECT_EQ(model().Connect(path), 0);
  ASSERT_NE(stored->event(), nullptr);
  EXPECT_EQ(stored->event()->name(), "name");
}

}  // namespace
