#include <gmock/gmock.h>

#include <vptz/model/vptzmodel.h>

#include "model/raw_database.h"
#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;
using vptz_test::RawDatabase;
using vptz_test::StatusReply;

std::string InsertPreset(const std::string& ptz, const std::string& preset_id, const std::string& token,
                         const std::string& name) {
  return Insert(
      "preset",
      {{"ptz", ptz}, {"preset_id", preset_id}, {"token", "'" + token + "'"}, {"name", "'" + name + "'"}});
}

const std::string& StoredPreset() {
  static const std::string statement = InsertPreset("3", "5", "token5", "door");
  return statement;
}

const CommandCase kPresets[] = {
    {"UpdatePresets", "update_presets", "ptz_command { ptz_id: 3 }",
     [](VptzClient& client, int timeout) { return client.UpdatePresets(3, timeout); }},
    {"SetPreset", "set_preset", "ptz_command { ptz_id: 3 preset_name: 'door' preset_token: 'token5' }",
     [](VptzClient& client, int timeout) { return client.SetPreset(3, "door", "token5", timeout); }},
    {"SetPresetById", "set_preset", "ptz_command { ptz_id: 3 preset_name: 'door' preset_token: 'token5' }",
     [](VptzClient& client, int timeout) { return client.SetPresetById(3, 5, timeout); }, StoredPreset()},
    {"GotoPreset", "goto_preset",
     "ptz_command { ptz_id: 3 preset_token: 'token5' pan_speed: 1 tilt_speed: -9999999 zoom_speed: 0.5 }",
     [](VptzClient& client, int timeout) {
       return client.GotoPreset(3, "token5", 1, kVptzNotCommanded, 0.5, timeout);
     }},
    {"GotoPresetById", "goto_preset",
     "ptz_command { ptz_id: 3 preset_token: 'token5' pan_speed: 1 tilt_speed: -9999999 zoom_speed: 0.5 }",
     [](VptzClient& client, int timeout) {
       return client.GotoPresetById(3, 5, 1, kVptzNotCommanded, 0.5, timeout);
     },
     StoredPreset()},
    {"RemovePreset", "remove_preset", "ptz_command { ptz_id: 3 preset_token: 'token5' }",
     [](VptzClient& client, int timeout) { return client.RemovePreset(3, "token5", timeout); }},
    {"RemovePresetById", "remove_preset", "ptz_command { ptz_id: 3 preset_token: 'token5' }",
     [](VptzClient& client, int timeout) { return client.RemovePresetById(3, 5, timeout); }, StoredPreset()},
};

INSTANTIATE_TEST_SUITE_P(Presets, CommandTest, testing::ValuesIn(kPresets), vptz_test::CommandName);

class PresetsTest : public ConnectedClientTest {
 protected:
  // What the three operations by preset id return.
  std::vector<int> CallAllById(unsigned int ptz_id, unsigned int preset_id) {
    return {client.SetPresetById(ptz_id, preset_id), client.GotoPresetById(ptz_id, preset_id, 1, 2, 3),
            client.RemovePresetById(ptz_id, preset_id)};
  }
};

TEST_F(PresetsTest, APresetIdThatOnlyAnotherNodeHasReturnsMinusOneAndSendsNothing) {
  Store(InsertPreset("4", "5", "token5", "door"));
  EXPECT_THAT(CallAllById(3, 5), ElementsAre(-1, -1, -1));
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(PresetsTest, AnUnknownPresetIdIsNoErrorInTheLog) {
  EXPECT_THAT(CallAllById(3, 5), ElementsAre(-1, -1, -1));
  EXPECT_THAT(Sent(), IsEmpty());
  for (const vptz_test::LogLine& line : log.lines) EXPECT_EQ(line.level, 3) << line;
}

TEST_F(PresetsTest, OfTwoNodesWithTheSamePresetIdTheOneNamedCounts) {
  Store(InsertPreset("3", "5", "of3", "") + InsertPreset("4", "5", "of4", ""));
  client.RemovePresetById(4, 5);
  EXPECT_EQ(SentCommand().ptz_command().preset_token(), "of4");
}

TEST_F(PresetsTest, AStoredPresetWithEmptyTextsIsSentWithEmptyTexts) {
  Store(InsertPreset("3", "5", "", ""));
  EXPECT_EQ(client.SetPresetById(3, 5), 0);
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_TRUE(ptz.has_preset_name());
  EXPECT_TRUE(ptz.has_preset_token());
  EXPECT_EQ(ptz.preset_name() + ptz.preset_token(), "");
}

TEST_F(PresetsTest, SetPresetWithAnEmptyTokenIsSentAsItIs) {
  EXPECT_EQ(client.SetPreset(3, "", ""), 0);
  EXPECT_TRUE(SentCommand().ptz_command().has_preset_name());
  EXPECT_TRUE(SentCommand().ptz_command().has_preset_token());
}

TEST_F(PresetsTest, TheLargestPresetIdIsFound) {
  Store(InsertPreset("4294967295", "4294967295", "last", ""));
  EXPECT_EQ(client.RemovePresetById(4294967295u, 4294967295u), 0);
  EXPECT_EQ(SentCommand().ptz_command().preset_token(), "last");
}

TEST_F(PresetsTest, RemovingStoringAndRefusalsLeaveTheRowsAlone) {
  Store(StoredPreset());
  for (const int status_code : {0, -1004}) {
    bus.ReplyWith(StatusReply(status_code));
    EXPECT_THAT(CallAllById(3, 5), ElementsAre(status_code, status_code, status_code));
    client.SetPreset(3, "new", "new");
    client.RemovePreset(3, "token5");
    client.UpdatePresets(3);
  }
  EXPECT_EQ(RawDatabase(vptz::DatabaseFile()).Value("SELECT ptz, preset_id, token, name FROM preset"),
            "3|5|'token5'|'door'");
}

TEST_F(PresetsTest, WithoutADatabaseTheFormsByPresetIdReturnMinusOneAndTheOthersAreSent) {
  VptzModel::Instance().Release();
  EXPECT_THAT(CallAllById(3, 5), ElementsAre(-1, -1, -1));
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_EQ(client.UpdatePresets(3), 0);
}

TEST_F(PresetsTest, TextsOf100kBAreSentWhole) {
  const std::string text(100000, '%');
  Store(InsertPreset("3", "5", text, text));
  client.SetPresetById(3, 5);
  EXPECT_EQ(SentCommand().ptz_command().preset_token(), text);
  EXPECT_EQ(SentCommand().ptz_command().preset_name(), text);
}

using UnconnectedPresetsTest = ClientTest;

// What cannot be read is logged, so an empty log shows that nothing was.
TEST_F(UnconnectedPresetsTest, WithoutABusClientTheDatabaseIsNotRead) {
  VptzClient client;
  VptzModel::Instance().Release();
  log.lines.clear();
  EXPECT_EQ(client.SetPresetById(3, 5), -1);
  EXPECT_EQ(client.GotoPresetById(3, 5, 1, 2, 3), -1);
  EXPECT_EQ(client.RemovePresetById(3, 5), -1);
  EXPECT_THAT(log.lines, IsEmpty());
}

}  // namespace
