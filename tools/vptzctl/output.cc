#include "output.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "people.h"
#include "printable.h"

namespace vptzctl {
namespace {

using Json = nlohmann::ordered_json;

struct JsonOf {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(const Range& value) const { return {{"min", value.min}, {"max", value.max}}; }
  template <class T>
  Json operator()(const T& value) const {
    return value;
  }
};

void AddFields(const std::vector<Field>& fields, Json* object) {
  for (const Field& field : fields) (*object)[field.name] = std::visit(JsonOf(), field.value);
}

Json ArrayOf(const List& list) {
  Json array = Json::array();
  for (const auto& row : list.rows) {
    array.push_back(Json::object());
    AddFields(row, &array.back());
  }
  return array;
}

Json JsonObject(const Result& result, std::optional<int> status) {
  Json object;
  object["command"] = result.command.empty() ? Json(nullptr) : Json(result.command);
  AddFields(result.arguments, &object);
  AddFields(result.answers, &object);
  for (const Row& row : result.table) AddFields(row.fields, &object[row.name]);
  for (const List& list : result.lists) object[list.name] = ArrayOf(list);
  object["status"] = status ? Json(*status) : Json(nullptr);
  return object;
}

// An event repeats no arguments and has no status.
Json EventObject(const Result& result) {
  Json object;
  object["command"] = result.command;
  AddFields(result.answers, &object);
  return object;
}

// One line. Bytes that are no UTF-8 become U+FFFD.
std::string JsonLine(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

// Each line is cleared as it is overwritten, so that nothing flickers and the
// terminal needs no restoring, whenever the program ends.
std::string Redrawing(const std::string& text, int lines_above) {
  std::string drawn = lines_above > 0 ? "\x1b[" + std::to_string(lines_above) + "A" : "";
  for (const char c : text) drawn += c == '\n' ? "\x1b[K\n" : std::string(1, c);
  return drawn;
}

}  // namespace

void Output::Show(const Result& result, int status) {
  Print(json_ ? JsonLine(JsonObject(result, status)) : HumanText(result, ColoursFor(STDOUT_FILENO)));
}

void Output::Update(const Result& result, int status) {
  if (json_) {
    Print(JsonLine(JsonObject(result, status)));
  } else if (IsTerminal(STDOUT_FILENO)) {
    const std::string text = HumanText(result, ColoursFor(STDOUT_FILENO));
    Print(Redrawing(text, lines_to_redraw_));
    lines_to_redraw_ = static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  } else {
    Print(ReadingLine(result));
  }
}

void Output::Event(const Result& result) {
  Print(json_ ? JsonLine(EventObject(result)) : EventLine(result, ColoursFor(STDOUT_FILENO)));
}

void Output::Progress(const std::string& text) {
  if (json_ || !IsTerminal(STDOUT_FILENO)) return;
  Print(text);
  progress_shown_ = true;
}

void Output::EndUpdates() {
  if (lines_to_redraw_ > 0) Print("\n");
}

void Output::Fail(const Result& result, const Failure& failure, std::optional<int> status) {
  if (json_) {
    Json object = JsonObject(result, status);
    object["error"] = {{"name", failure.name},
                       {"message", failure.message},
                       {"exit_code", static_cast<int>(failure.exit_code)}};
    Print(JsonLine(object));
  } else {
    Print("");  // takes the progress away
  }
  const std::string asked = Asked(result);
  const std::string reason = status ? " (" + failure.name + ", " + std::to_string(*status) + ")" : "";
  const std::string line = ColoursFor(STDERR_FILENO).Bad("vptzctl:") + " " + asked +
                           (asked.empty() ? "" : ": ") + Printable(failure.message) + reason + "\n";
  std::fputs(line.c_str(), stderr);
}

void Output::Note(const std::string& text) { std::fputs(("vptzctl: " + text + "\n").c_str(), stderr); }

void Output::Print(const std::string& text) {
  const std::string all = (progress_shown_ ? "\r\x1b[K" : "") + text;
  progress_shown_ = false;
  const bool written = std::fwrite(all.data(), 1, all.size(), stdout) == all.size();
  complete_ = written && std::fflush(stdout) == 0 && complete_;
}

}  // namespace vptzctl
