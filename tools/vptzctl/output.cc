#include "output.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include <nlohmann/json.hpp>

namespace vptzctl {
namespace {

using Json = nlohmann::ordered_json;

// ---- for people --------------------------------------------------------------

// Numbers in tables and readings stand below each other.
std::string FormatAligned(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.2f", std::fabs(number) < 0.005 ? 0.0 : number);
  return text;
}

struct TextOf {
  std::string (*number)(double);
  std::string operator()(std::monostate) const { return "unknown"; }
  std::string operator()(bool value) const { return value ? "yes" : "no"; }
  std::string operator()(std::uint32_t value) const { return std::to_string(value); }
  std::string operator()(double value) const { return number(value); }
  std::string operator()(const std::string& value) const { return Printable(value); }
  std::string operator()(const Range& value) const {
    return FormatNumber(value.min) + " to " + FormatNumber(value.max);
  }
};

std::string Text(const Field& field, std::string (*number)(double) = FormatNumber) {
  const std::string text = std::visit(TextOf{number}, field.value);
  return field.unit.empty() || field.value.index() == 0 ? text : text + " " + field.unit;
}

std::string Label(std::string name) {
  std::replace(name.begin(), name.end(), '_', ' ');
  return name;
}

std::string Pad(const std::string& text, std::size_t width, bool to_the_right) {
  const std::string blanks(text.size() < width ? width - text.size() : 0, ' ');
  return to_the_right ? blanks + text : text + blanks;
}

// "move to: ptz 1, pan 30 deg"; arguments that were not given are left out.
std::string Asked(const Result& result) {
  std::string text;
  for (const Field& field : result.arguments) {
    const bool* flag = std::get_if<bool>(&field.value);
    if (field.value.index() == 0 || (flag && !*flag)) {
      continue;
    }
    text += (text.empty() ? "" : ", ") + Label(field.name) + (flag ? "" : " " + Text(field));
  }
  return text.empty() ? result.command : result.command + ": " + text;
}

std::string AnswerLines(const std::vector<Field>& answers) {
  std::size_t width = 0;
  for (const Field& field : answers) {
    width = std::max(width, field.name.size());
  }
  std::string text;
  for (const Field& field : answers) {
    text += "  " + Pad(Label(field.name), width, false) + "  " + Text(field) + "\n";
  }
  return text;
}

using Cells = std::vector<std::vector<std::string>>;

Cells CellsOf(const std::vector<Row>& table) {
  Cells cells(1, {""});
  for (const Field& field : table.front().fields) {
    cells.front().push_back(Label(field.name));
  }
  for (const Row& row : table) {
    cells.push_back({row.name});
    for (const Field& field : row.fields) {
      cells.back().push_back(Text(field, FormatAligned));
    }
  }
  return cells;
}

std::string TableLines(const std::vector<Row>& table) {
  if (table.empty()) {
    return "";
  }
  const Cells cells = CellsOf(table);
  std::string text;
  for (const auto& line : cells) {
    text += " ";
    for (std::size_t column = 0; column < line.size(); ++column) {
      std::size_t width = 0;
      for (const auto& other : cells) {
        width = std::max(width, other[column].size());
      }
      text += (column == 0 ? " " : "   ") + Pad(line[column], width, column > 0);
    }
    text += "\n";
  }
  return text;
}

std::string HumanText(const Result& result) {
  const std::string answers = AnswerLines(result.answers) + TableLines(result.table);
  return Asked(result) + (answers.empty() ? ": done\n" : "\n" + answers);
}

// What changes, on one line.
std::string ReadingLine(const Result& result) {
  constexpr std::size_t kNumberWidth = 7;
  std::string text;
  const auto add = [&text](const std::vector<Field>& fields) {
    for (const Field& field : fields) {
      if (!field.steady) {
        const Field bare = {field.name, field.value, "", field.steady};
        text += " " + Pad(Text(bare, FormatAligned), kNumberWidth, true) + " " + field.unit;
      }
    }
  };
  add(result.answers);
  for (const Row& row : result.table) {
    text += "   " + row.name;
    add(row.fields);
  }
  return text + "\n";
}

bool RedrawsOnStandardOutput() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && terminal && std::string(terminal) != "dumb";
}

// Each line is cleared as it is overwritten, so that nothing flickers and the
// terminal needs no restoring, whenever the program ends.
std::string Redrawing(const std::string& text, int lines_above) {
  std::string drawn = lines_above > 0 ? "\x1b[" + std::to_string(lines_above) + "A" : "";
  for (const char c : text) {
    drawn += c == '\n' ? "\x1b[K\n" : std::string(1, c);
  }
  return drawn;
}

// ---- for programs ------------------------------------------------------------

struct JsonOf {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(const Range& value) const { return {{"min", value.min}, {"max", value.max}}; }
  template <class T>
  Json operator()(const T& value) const {
    return value;
  }
};

void AddFields(const std::vector<Field>& fields, Json* object) {
  for (const Field& field : fields) {
    (*object)[field.name] = std::visit(JsonOf(), field.value);
  }
}

Json JsonObject(const Result& result, std::optional<int> status) {
  Json object;
  object["command"] = result.command.empty() ? Json(nullptr) : Json(result.command);
  AddFields(result.arguments, &object);
  AddFields(result.answers, &object);
  for (const Row& row : result.table) {
    AddFields(row.fields, &object[row.name]);
  }
  object["status"] = status ? Json(*status) : Json(nullptr);
  return object;
}

// One line. Bytes that are no UTF-8 become U+FFFD.
std::string JsonLine(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

void Result::SetArgument(const std::string& name, const Value& value) {
  for (Field& field : arguments) {
    if (field.name == name) {
      field.value = value;
    }
  }
}

void Output::Show(const Result& result, int status) {
  Print(json_ ? JsonLine(JsonObject(result, status)) : HumanText(result));
}

void Output::Update(const Result& result, int status) {
  if (json_) {
    Print(JsonLine(JsonObject(result, status)));
  } else if (RedrawsOnStandardOutput()) {
    const std::string text = HumanText(result);
    Print(Redrawing(text, lines_to_redraw_));
    lines_to_redraw_ = static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  } else {
    Print(ReadingLine(result));
  }
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
  }
  const std::string asked = Asked(result);
  const std::string reason = status ? " (" + failure.name + ", " + std::to_string(*status) + ")" : "";
  const std::string line =
      "vptzctl: " + asked + (asked.empty() ? "" : ": ") + Printable(failure.message) + reason + "\n";
  std::fputs(line.c_str(), stderr);
}

void Output::Print(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  complete_ = written && std::fflush(stdout) == 0 && complete_;
}

std::string FormatNumber(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10g", number);
  return text;
}

std::string Printable(const std::string& text) {
  std::string clean;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
      clean += escaped;
    } else {
      clean += c;
    }
  }
  return clean;
}

}  // namespace vptzctl
