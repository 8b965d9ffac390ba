// Key files that a broken disk or a stranger left: the library's configuration
// and the bus's settings give an error or what the file says, at once.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vptz/config.h>
#include <vptz/vptz_client.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "connect_settings.h"
#include "installed_paths.h"
#include "reliability/reliability.h"
#include "support/machine_delay.h"
#include "support/recording_bus.h"
#include "support/recording_log.h"
#include "support/temp_dir.h"

namespace vptz_test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAtOnce{1};
constexpr std::size_t kLargest = std::size_t{1} << 20;
constexpr int kUntouched = -5;
constexpr int kDefault = 7;

constexpr char kWhole[] =
    "# the library's\n[MQTT]\ntimeout=3\n\n[VPTZ]\nndi_preset_shift = 12\n\n"
    "# the bus's\n[broker]\nuser=desk\npassword=a secret\n\n"
    "[tls]\nca_file=/etc/ca.pem\ncertificate=/etc/client.pem\nkey=/etc/client.key\n";

class Mutation {
 public:
  explicit Mutation(unsigned seed) : random_(seed) {}

  std::string Done(std::string text) {
    for (std::size_t i = 1 + Below(4); i > 0; --i) text = Once(std::move(text));
    return text;
  }

 private:
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }

  std::string Once(std::string text) {
    const std::size_t at = Below(text.size() + 1);
    switch (Below(9)) {
      case 0:
        return text.substr(0, at);
      case 1:
        return text.substr(at);
      case 2:
        if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << Below(8)));
        return text;
      case 3:
        return text.insert(at, 1 + Below(8), static_cast<char>(Below(256)));
      case 4:  // once more, which doubles groups and keys
        return text + text.substr(at);
      case 5:
        return text.insert(at, 1 + Below(20000), "7=[\n"[Below(4)]);
      case 6:
        return text.insert(at, 1, '\0');
      case 7:
        return text.insert(at, "\xc3\x28\xff");
      default:
        return text.erase(at, Below(40));
    }
  }

  std::mt19937 random_;
};

std::string Chugged(std::string text) {
  text.erase(0, std::min(text.find_first_not_of(" \t\r\f"), text.size()));
  return text;
}

// What the lines of a text give a key, whatever group they are in: looked at
// without GLib. A NUL ends a line's text.
std::vector<std::string> ValuesOf(const std::string& text, const std::string& key) {
  std::vector<std::string> values;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string line = Chugged(text.substr(begin, end - begin).c_str());
    begin = end + 1;
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos || line.compare(0, key.size(), key) != 0) continue;
    if (!Chugged(line.substr(key.size(), equals - key.size())).empty()) continue;
    std::string value = Chugged(line.substr(equals + 1));
    if (!value.empty() && value.back() == '\r') value.pop_back();
    values.push_back(value);
  }
  return values;
}

class KeyFiles : public testing::Test {
 protected:
  KeyFiles() {
    setenv("DORV_BUS_SETTINGS", path_.c_str(), 1);
    bus_.client_new_fails = true;
  }
  ~KeyFiles() override {
    unsetenv("DORV_BUS_SETTINGS");
    unlink(vptz::ConfigFile());
  }

  void Write(const std::string& text) const {
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    file << text;
  }

  // An error, and then nothing but defaults, or what the file says.
  void ExpectTrueConfiguration(const std::string& text) {
    Config config(path_.c_str());
    const bool loaded = config.Load() == 0;
    loaded_ += loaded ? 1 : 0;
    ExpectTrueNumber(config, loaded, text, "MQTT", "timeout");
    ExpectTrueNumber(config, loaded, text, "VPTZ", "ndi_preset_shift");
  }

  void ExpectTrueSettings(const std::string& text) {
    const std::optional<dorv::ConnectSettings> settings = dorv::ConnectSettings::Load();
    if (!settings) return;
    settings_ += 1;
    ExpectTrueText(text, "user", settings->user);
    ExpectTrueText(text, "password", settings->password);
    ExpectTrueText(text, "ca_file", settings->ca_file);
    ExpectTrueText(text, "certificate", settings->certificate);
    ExpectTrueText(text, "key", settings->key);
  }

  // Neither of them takes the file, and neither takes long to say so.
  void ExpectRefusedAtOnce() {
    ExpectAtOnce([this] { EXPECT_EQ(Config(path_.c_str()).Load(), -1); });
    ExpectAtOnce([] { EXPECT_FALSE(dorv::ConnectSettings::Load().has_value()); });
    // The client works on, with its defaults.
    unlink(vptz::ConfigFile());
    ASSERT_EQ(symlink(path_.c_str(), vptz::ConfigFile()), 0);
    ExpectAtOnce([] { EXPECT_EQ(VptzClient().GetVptzTimeout(0), 2); });
  }

  void ExpectAtOnce(const std::function<void()>& action) {
    const Clock::time_point begin = Clock::now();
    action();
    const Clock::time_point end = Clock::now();
    if (end - begin > kAtOnce) {
      EXPECT_LE(end - begin, kAtOnce + delay_.Between(begin, end));
    }
  }

  TempDir folder_;
  const std::string path_ = folder_.path() + "/keys";
  RecordingLog log_;
  RecordingBus bus_;
  MachineDelay delay_;
  int loaded_ = 0;
  int settings_ = 0;

 private:
  static void ExpectTrueNumber(Config& config, bool loaded, const std::string& text, const char* group,
                               const char* key) {
    int number = kUntouched;
    config.GetValue(group, key, kDefault, number);
    if (number == kDefault || (loaded && number == kUntouched)) return;
    EXPECT_TRUE(loaded) << key << ' ' << number;
    bool told = false;
    for (const std::string& value : ValuesOf(text, key)) told |= std::atoll(value.c_str()) == number;
    EXPECT_TRUE(told) << key << ' ' << number << " is not from the file "
                      << testing::PrintToString(text.substr(0, 2000));
  }

  static void ExpectTrueText(const std::string& text, const std::string& key, const std::string& value) {
    if (value.empty()) return;
    bool told = false;
    // Escapes are the file's own way to write a text.
    for (const std::string& one : ValuesOf(text, key))
      told |= one == value || one.find('\\') != std::string::npos;
    EXPECT_TRUE(told) << key << " \"" << value << "\" is not from the file "
                      << testing::PrintToString(text.substr(0, 2000));
  }
};

TEST_F(KeyFiles, TheWholeOneIsTaken) {
  Write(kWhole);
  Config config(path_.c_str());
  EXPECT_EQ(config.Load(), 0);
  int number = 0;
  EXPECT_EQ(config.GetValue("MQTT", "timeout", kDefault, number), 0);
  EXPECT_EQ(number, 3);
  EXPECT_EQ(config.GetValue("VPTZ", "ndi_preset_shift", kDefault, number), 0);
  EXPECT_EQ(number, 12);
  const auto settings = dorv::ConnectSettings::Load();
  ASSERT_TRUE(settings.has_value());
  EXPECT_EQ(settings->user, "desk");
  EXPECT_EQ(settings->password, "a secret");
  EXPECT_EQ(settings->key, "/etc/client.key");
}

TEST_F(KeyFiles, ThatAreDamagedGiveErrorsOrWhatTheySay) {
  const int count = Scaled(2000, 200000);
  Clock::duration longest{};
  for (int seed = 1; seed <= count && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::string text = Mutation(static_cast<unsigned>(seed)).Done(kWhole);
    Write(text);
    const Clock::time_point begin = Clock::now();
    ExpectAtOnce([&] {
      ExpectTrueConfiguration(text);
      ExpectTrueSettings(text);
    });
    longest = std::max(longest, Clock::now() - begin);
    log_.lines.clear();
  }
  // Neither all of them are refused nor none.
  EXPECT_GT(loaded_, count / 20);
  EXPECT_LT(loaded_, count * 19 / 20);
  EXPECT_GT(settings_, count / 20);
  RecordProperty("files", count);
  RecordProperty("loaded", loaded_);
  RecordProperty("longest_ms", static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(longest).count()));
}

// One line, and millions of them, of which the first ones alone would do.
TEST_F(KeyFiles, OfAHundredMegabytesAreRefusedAtOnce) {
  constexpr std::size_t kHuge = 100'000'000;
  for (const std::string& repeated : {std::string("x"), std::string("key=value\n")}) {
    SCOPED_TRACE(repeated);
    {
      std::ofstream file(path_, std::ios::binary | std::ios::trunc);
      file << kWhole;
      for (std::size_t written = 0; written < 2 * kLargest; written += repeated.size()) file << repeated;
      ASSERT_TRUE(file.flush().good());
    }
    std::filesystem::resize_file(path_, kHuge);  // without taking the space
    ExpectRefusedAtOnce();
  }
}

TEST_F(KeyFiles, AsLongAsTheyMayBeAreTakenAtOnce) {
  for (const std::string& repeated : {std::string("key=value\n"), std::string("[MQTT]\n"), std::string("\n")}) {
    SCOPED_TRACE(repeated);
    std::string text = kWhole;
    while (text.size() + repeated.size() <= kLargest) text += repeated;
    Write(text);
    ExpectAtOnce([&] { EXPECT_EQ(Config(path_.c_str()).Load(), 0); });
    ExpectAtOnce([&] { EXPECT_TRUE(dorv::ConnectSettings::Load().has_value()); });
    Write(text + std::string(kLargest - text.size() + 1, '\n'));
    ExpectRefusedAtOnce();
  }
}

TEST_F(KeyFiles, ThatArePipesAreRefusedAtOnce) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  ExpectRefusedAtOnce();
}

TEST_F(KeyFiles, ThatAreDevicesFoldersOrLinksToNowhereAreRefusedAtOnce) {
  for (const char* target : {"/dev/zero", "/dev/null", "/dev/tty", "/nonexistent/file", "/", "keys"}) {
    SCOPED_TRACE(target);
    unlink(path_.c_str());
    ASSERT_EQ(symlink(target, path_.c_str()), 0);
    ExpectRefusedAtOnce();
  }
}

// Root reads everything: there a child becomes somebody else.
TEST_F(KeyFiles, ThatMayNotBeReadAreRefused) {
  constexpr uid_t kNobody = 65534;
  Write(kWhole);
  ASSERT_EQ(chmod(path_.c_str(), 0), 0);
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && (chmod(folder_.path().c_str(), 0755) != 0 || setuid(kNobody) != 0)) _exit(2);
    _exit(Config(path_.c_str()).Load() == -1 && !dorv::ConnectSettings::Load() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST_F(KeyFiles, WithAPasswordFileThatIsAPipeOrHugeAreRefusedAtOnce) {
  const std::string password = folder_.path() + "/password";
  Write("[broker]\nuser=desk\npassword_file=" + password + "\n");
  ASSERT_EQ(mkfifo(password.c_str(), 0600), 0);
  ExpectAtOnce([] { EXPECT_FALSE(dorv::ConnectSettings::Load().has_value()); });
  unlink(password.c_str());
  std::ofstream(password) << std::string(kLargest + 1, 'x');
  ExpectAtOnce([] { EXPECT_FALSE(dorv::ConnectSettings::Load().has_value()); });
  std::ofstream(password, std::ios::trunc) << "right\nnot this\n";
  EXPECT_EQ(dorv::ConnectSettings::Load()->password, "right");
}

}  // namespace
}  // namespace vptz_test
