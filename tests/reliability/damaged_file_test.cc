// Database files that a broken disk or a stranger left: opening, bringing up and
// querying them gives results or errors, and a file is replaced only when it
// says itself that it is an old one.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vptz/model/device.h>
#include <vptz/model/device_type.h>
#include <vptz/model/event.h>
#include <vptz/model/event_information.h>
#include <vptz/model/media.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>
#include <vptz/model/setting.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>

#include "model/model_test.h"
#include "model/schema_statements.h"
#include "reliability/reliability.h"
#include "support/process.h"

namespace vptz_test {
namespace {

constexpr std::size_t kPage = 4096;

// Longer than any operation may wait for a lock.
constexpr std::chrono::seconds kTooLong{6};

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Damage {
 public:
  explicit Damage(unsigned seed) : random_(seed) {}

  // One of several kinds of damage, chosen by the seed's random numbers.
  std::string Done(std::string bytes) {
    switch (Below(8)) {
      case 0:
        return bytes.substr(0, Below(bytes.size()));
      case 1:
        return bytes.substr(0, Below(bytes.size() / kPage) * kPage);
      case 2:
        for (std::size_t i = 1 + Below(3); i > 0; --i) ZeroPage(bytes);
        return bytes;
      case 3:  // the first page: header and schema
        for (std::size_t i = 1 + Below(8); i > 0; --i) Flip(bytes, Below(kPage));
        return bytes;
      case 4:
        SwapPages(bytes);
        return bytes;
      case 5:
        for (char& byte : bytes) byte = static_cast<char>(Below(256));
        return bytes;
      default:
        for (std::size_t i = 1 + Below(64); i > 0; --i) Flip(bytes, Below(bytes.size()));
        return bytes;
    }
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  void Flip(std::string& bytes, std::size_t at) { bytes[at] = static_cast<char>(bytes[at] ^ (1 << Below(8))); }
  void ZeroPage(std::string& bytes) {
    const std::size_t at = Below(bytes.size() / kPage) * kPage;
    bytes.replace(at, kPage, kPage, '\0');
  }
  void SwapPages(std::string& bytes) {
    const std::size_t one = Below(bytes.size() / kPage) * kPage;
    const std::size_t other = Below(bytes.size() / kPage) * kPage;
    std::swap_ranges(bytes.begin() + static_cast<std::ptrdiff_t>(one),
                     bytes.begin() + static_cast<std::ptrdiff_t>(one + kPage),
                     bytes.begin() + static_cast<std::ptrdiff_t>(other));
  }

  std::mt19937 random_;
};

template <class Row>
void UseRows() {
  Rows<Row> rows;
  Row::QueryAll(&rows, 0, 65535);
  Row* one = nullptr;
  Row::QueryById(&one, 1);
  delete one;
}

void UseReferences() {
  Rows<Preset> presets;
  Preset::QueryAll(&presets, 0, 65535);
  for (const Preset* preset : presets) preset->ptz();
  Rows<Ptz> nodes;
  Ptz::QueryAll(&nodes, 0, 65535);
  for (const Ptz* node : nodes) {
    node->device();
    node->pan();
  }
}

void UseEverything() {
  UseRows<Device>();
  UseRows<DeviceType>();
  UseRows<Event>();
  UseRows<EventInformation>();
  UseRows<Media>();
  UseRows<MediaParameter>();
  UseRows<Movement>();
  UseRows<MovementParameter>();
  UseRows<Preset>();
  UseRows<Protocol>();
  UseRows<Ptz>();
  UseReferences();
  Device::QueryCount();
  Preset::QueryCountByPtz(1);
  Preset::QueryMaxPresetIdByPtz(1);
  std::string value;
  Setting::QueryValue("key", &value);
  Event event("new", "");
  if (Event::Add(&event) > 0) Event::Remove(event.id());
  Preset::RemoveByPtz(1);
}

class DamagedFile : public ModelTest {
 protected:
  // A current database with rows in every table, several pages of some.
  std::string Whole() {
    MakeFile(OldSchema(6) + OldRows());
    EXPECT_EQ(Initialize(), 0);
    for (int i = 0; i < 300; ++i) {
      Event event("event " + std::to_string(i), std::string(100, 'e'));
      EXPECT_GT(Event::Add(&event), 0);
    }
    model().Release();
    return ReadFile(path);
  }

  void Put(const std::string& bytes) {
    model().Release();
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) unlink((path + suffix).c_str());
    std::ofstream(path, std::ios::binary) << bytes;
  }

  // The version that the file itself tells; 0 when it tells that it has none,
  // nothing when it cannot be read.
  std::optional<int> ToldVersion() const {
    try {
      RawDatabase raw(path);
      if (raw.Value("SELECT count(*) FROM sqlite_master WHERE name = 'schema_version'") == "0") return 0;
      const std::vector<std::string> rows = raw.Rows("SELECT version FROM schema_version WHERE name = 'vptz'");
      if (rows.empty()) return 0;
      return std::stoi(rows[0]);
    } catch (const std::exception&) {
      return std::nullopt;
    }
  }

  // Initialize, and what has become of the file.
  void ExpectKeptUnlessOld() {
    const std::optional<int> version = ToldVersion();
    const Descriptor held(open(path.c_str(), O_RDONLY | O_CLOEXEC));  // its inode number is not given away
    struct stat before {};
    struct stat after {};
    EXPECT_EQ(fstat(held.get(), &before), 0);
    Initialize();
    EXPECT_EQ(stat(path.c_str(), &after), 0);
    const bool replaced = before.st_ino != after.st_ino;
    replacements += replaced ? 1 : 0;
    if (replaced) {
      EXPECT_TRUE(version && *version <= 3) << "version " << version.value_or(-1);
    }
  }

  int replacements = 0;
};

TEST_F(DamagedFile, GivesResultsOrErrorsAndIsNotReplaced) {
  const std::string whole = Whole();
  ASSERT_GT(whole.size(), 20 * kPage);
  const int count = Scaled(200, 2000);
  for (int seed = 1; seed <= count; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const auto begin = std::chrono::steady_clock::now();
    Put(Damage(static_cast<unsigned>(seed)).Done(whole));
    if (model().Connect(path) == 0) UseEverything();
    model().Release();
    Put(Damage(static_cast<unsigned>(seed)).Done(whole));
    ExpectKeptUnlessOld();
    if (model().IsConnected()) UseEverything();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kTooLong);
    log.lines.clear();
  }
  RecordProperty("files", count);
  RecordProperty("replaced", replacements);
}

TEST_F(DamagedFile, WithAVersionThatCannotBeReadIsKept) {
  for (const char* damage : {"ALTER TABLE schema_version RENAME COLUMN version TO versiom",
                             "UPDATE schema_version SET version = 'x'"}) {
    SCOPED_TRACE(damage);
    Put(Whole());
    RawDatabase(path).Execute(damage);
    EXPECT_EQ(Initialize(), -1);
    model().Release();
    EXPECT_EQ(RawDatabase(path).Value("SELECT count(*) > 300 FROM event"), "1");
    Put("");
  }
}

TEST_F(DamagedFile, ThatIsAPipeIsAnError) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(model().Connect(path), -1);
  UseEverything();
  EXPECT_EQ(Initialize(), -1);
  if (model().IsConnected()) UseEverything();
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(DamagedFile, ThatIsADirectoryIsAnError) {
  ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
  EXPECT_EQ(model().Connect(path), -1);
  EXPECT_EQ(Initialize(), -1);
  UseEverything();
  EXPECT_EQ(rmdir(path.c_str()), 0);
}

TEST_F(DamagedFile, ThatIsEmptyBecomesADatabase) {
  Put("");
  EXPECT_EQ(model().Connect(path), 0);
  UseEverything();
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT version FROM schema_version"), "10");
}

}  // namespace
}  // namespace vptz_test
