#include <filesystem>

#include <vptz/model/device.h>
#include <vptz/model/event_information.h>
#include <vptz/model/media.h>
#include <vptz/model/preset.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>
#include <vptz/model/vptzmodel.h>

#include "camera.h"
#include "command.h"
#include "script.h"
#include "session.h"

namespace vptzctl {
namespace {

constexpr char kSchema[] = "vptz";

// The last version that the library replaces by an empty file instead of
// migrating it.
constexpr int kLastReplacedVersion = 3;

[[noreturn]] void Fail(const std::string& name, const std::string& message) {
  throw CommandError({name, message, ExitCode::kDatabase});
}

template <class Row>
Field CountOf(const std::string& name) {
  std::vector<Row*> rows;
  Row::QueryAll(&rows, 0, 0);
  Field field = {name, static_cast<std::uint32_t>(rows.size()), ""};
  VptzModel::CleanQuery(&rows);
  return field;
}

int VersionOf(const std::string& file) {
  const int version = VptzModel::Instance().SchemaVersion(kSchema);
  if (version < 0) Fail("unusable_database", file + " is no database or cannot be read");
  return version;
}

void Open(const std::string& file) {
  if (VptzModel::Instance().Connect(file) < 0)
    Fail("unusable_database", file + " is missing or cannot be opened");
}

ExitCode Show(Session& session) {
  const std::string file = session.Text("FILE");
  if (file.empty()) {
    session.OpenLibrary();
    RequireDatabase();
  } else {
    Open(file);
  }
  const int version = VersionOf(file.empty() ? "the library's database" : file);
  session.result.answers = {{"version", static_cast<std::uint32_t>(version), ""}};
  if (version <= kLastReplacedVersion) return session.Finish(0);
  for (const Field& count : {CountOf<Device>("cameras"), CountOf<Ptz>("ptz_profiles"),
                             CountOf<Media>("media_profiles"), CountOf<Preset>("presets"),
                             CountOf<Protocol>("protocols"), CountOf<EventInformation>("event_records")}) {
    session.result.answers.push_back(count);
  }
  return session.Finish(0);
}

// Not by the library, which keeps to itself what sqlite3 says.
void RunTheScript(const std::string& file, const std::string& script) {
  const std::string reason = RunScript(file, script);
  if (!reason.empty()) Fail("unusable_database", "the script " + script + " failed: " + reason);
}

ExitCode Initialized(Session& session, const std::string& file) {
  if (VptzModel::Instance().Initialize(file, kSchema, "") < 0) {
    Fail("unusable_database",
         file + " could not be brought to the library's version; with -v the log tells why");
  }
  if (session.Given("--data")) RunTheScript(file, session.Text("--data"));
  session.result.answers.push_back({"version", static_cast<std::uint32_t>(VersionOf(file)), ""});
  return session.Finish(0);
}

ExitCode Create(Session& session) {
  const std::string file = session.Text("FILE");
  if (std::filesystem::exists(std::filesystem::symlink_status(file))) {
    Fail("file_exists", file + " is there already");
  }
  return Initialized(session, file);
}

ExitCode Migrate(Session& session) {
  const std::string file = session.Text("FILE");
  Open(file);
  const int version = VersionOf(file);
  if (version <= kLastReplacedVersion && !session.Flag("--replace")) {
    Fail("worthless_version", file + " has the version " + std::to_string(version) +
                                  ", which cannot be migrated; with --replace it becomes an empty database");
  }
  session.result.answers = {{"previous_version", static_cast<std::uint32_t>(version), ""}};
  return Initialized(session, file);
}

Argument DatabaseFile() { return File("FILE", "", "the database file"); }

Argument Data() { return File("--data", "SCRIPT", "SQL script to run in it afterwards"); }

}  // namespace

std::vector<Command> DatabaseCommands() {
  return {
      {"db",
       "show",
       "Shows the version of a database and what it holds: of the library's own, or of a file.",
       {"VptzModel::Connect", "VptzModel::SchemaVersion"},
       {DatabaseFile().Optional()},
       {},
       Show,
       Needs::kNothing},
      {"db",
       "create",
       "Creates a database file.",
       {"VptzModel::Initialize"},
       {DatabaseFile(), Data()},
       {},
       Create,
       Needs::kNothing},
      {"db",
       "migrate",
       "Brings a database file to the library's version.",
       {"VptzModel::Initialize"},
       {DatabaseFile(), Data(),
        Flag("--replace", "replace a file that is too old for a migration; its content is lost")},
       {},
       Migrate,
       Needs::kNothing},
  };
}

}  // namespace vptzctl
