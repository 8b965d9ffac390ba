#include "cli_test.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "support/wait_until.h"

namespace vptz_test {

using testing::HasSubstr;

Words Split(const std::string& line) {
  std::istringstream stream(line);
  Words words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> WholeLines(const std::string& text) {
  return Lines(text.substr(0, text.rfind('\n') + 1));
}

std::string Content(const std::string& path) {
  const std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

Words InTerminal(const Words& words) {
  // A shell that stayed between would die of an interrupt itself.
  std::string command = "exec ";
  for (const std::string& word : words) command += word + " ";
  return {VPTZ_SCRIPT, "--quiet", "--return", "--command", command, "/dev/null"};
}

std::string Page() { return Content(VPTZCTL_PAGE); }

RunResult RunTool(const Words& words, const Words& environment) {
  Words argv = {VPTZCTL};
  argv.insert(argv.end(), words.begin(), words.end());
  return Run(argv, environment);
}

void ExpectFailure(const RunResult& result, int exit_code, const std::string& name) {
  EXPECT_EQ(result.exit_code, exit_code) << result.output << result.errors;
  const Json object = Json::parse(result.output);
  ASSERT_TRUE(object.contains("error")) << result.output;
  EXPECT_EQ(object["error"]["exit_code"], exit_code);
  EXPECT_EQ(object["error"]["name"], name);
  const std::string message = object["error"]["message"];
  EXPECT_FALSE(message.empty());
  EXPECT_THAT(result.errors, HasSubstr("vptzctl: "));
  EXPECT_THAT(result.errors, HasSubstr(message));
}

BusTest::BusTest() {
  Write("vptz.conf", "");
  // Its rows are written before it looks for the bus.
  const RunResult result =
      vptz_test::Run({VPTZD, "--bus", "unix:/nowhere", "--database", database(), "--cameras", "2"});
  if (result.exit_code != 3) throw std::runtime_error("no database: " + result.errors);
}

std::string BusTest::Write(const std::string& name, const std::string& text) const {
  std::string path = broker.folder() + "/" + name;
  std::ofstream file(path);
  file << text << std::flush;
  if (!file) throw std::runtime_error("cannot write " + path);
  return path;
}

void BusTest::Sql(const std::string& statements) const {
  // Statements may hold a password: not on the command line.
  const RunResult result = vptz_test::Run({"sqlite3", "-bail", database()}, {}, statements);
  if (result.exit_code != 0) throw std::runtime_error(result.errors);
}

Words BusTest::OnBus(const Words& words) const {
  Words all = {"--bus", broker.address()};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

Words BusTest::ToolOnBus(const std::string& line) const {
  Words all = OnBus(Split(line));
  all.insert(all.begin(), VPTZCTL);
  return all;
}

Json BusTest::CtlJson(const std::string& line) {
  const RunResult result = Ctl(line + " --json");
  EXPECT_EQ(result.exit_code, 0) << line << ": " << result.errors;
  EXPECT_EQ(result.output.find('\n') + 1, result.output.size()) << "not one line: " << result.output;
  return Json::parse(result.output);
}

void CliTest::StartService(const Words& options) {
  Words argv = {VPTZD, "--bus", broker.address(), "--database", database()};
  argv.insert(argv.end(), options.begin(), options.end());
  if (std::find(argv.begin(), argv.end(), "--cameras") == argv.end())
    argv.insert(argv.end(), {"--cameras", "2"});
  service.emplace(argv);
  const auto serves = [this] { return service->Output().find("serving") != std::string::npos; };
  if (!WaitUntil([&] { return serves() || !service->Running(); }) || !serves()) {
    throw std::runtime_error("the service does not run: " + service->Errors());
  }
}

Json CliTest::AtRest() {
  EXPECT_EQ(Ctl("ptz watch 1 --until-still --interval 0.01").exit_code, 0);
  return CtlJson("ptz position 1");
}

bool CliTest::ReachesSpeeds(const std::string& camera, double pan, double tilt, double zoom) {
  return WaitUntil([&] {
    const Json now = CtlJson("ptz position " + camera);
    return now["pan"]["speed"] == pan && now["tilt"]["speed"] == tilt && now["zoom"]["speed"] == zoom;
  });
}

}  // namespace vptz_test
