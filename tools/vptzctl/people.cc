#include "people.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <unistd.h>

#include "arguments.h"
#include "printable.h"

namespace vptzctl {
namespace {

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
  std::string operator()(const std::vector<std::string>& value) const { return Printable(Joined(value, "; ")); }
};

std::string Text(const Field& field, std::string (*number)(double) = FormatNumber) {
  const std::string text = std::visit(TextOf{number}, field.value);
  return field.unit.empty() || field.value.index() == 0 ? text : text + " " + field.unit;
}

std::string Label(std::string name) {
  std::replace(name.begin(), name.end(), '_', ' ');
  return name;
}

std::vector<std::string> Labels(const std::vector<Field>& fields) {
  std::vector<std::string> labels;
  labels.reserve(fields.size());
  for (const Field& field : fields) labels.push_back(Label(field.name));
  return labels;
}

bool IsNumber(const Value& value) {
  return std::holds_alternative<double>(value) || std::holds_alternative<std::uint32_t>(value) ||
         std::holds_alternative<Range>(value);
}

// Continuation bytes of UTF-8 take no place on the screen.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

std::string Pad(const std::string& text, std::size_t width, bool to_the_right) {
  const std::size_t have = Width(text);
  const std::string blanks(have < width ? width - have : 0, ' ');
  return to_the_right ? blanks + text : text + blanks;
}

std::string WithoutTrailingBlanks(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string AnswerLines(const std::vector<Field>& answers) {
  std::size_t width = 0;
  for (const Field& field : answers) width = std::max(width, field.name.size());
  std::string text;
  for (const Field& field : answers) {
    if (field.assumed) continue;
    text += WithoutTrailingBlanks("  " + Pad(Label(field.name), width, false) + "  " + Text(field)) + "\n";
  }
  return text;
}

// A table of texts whose first line is the heading. Columns of numbers stand on
// the right.
struct Cells {
  std::vector<std::vector<std::string>> lines;
  std::vector<bool> to_the_right;
  std::vector<std::size_t> widths;

  void Add(std::vector<std::string> line) {
    widths.resize(std::max(widths.size(), line.size()));
    for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], Width(line[i]));
    lines.push_back(std::move(line));
  }

  std::string Line(const std::vector<std::string>& line) const {
    std::string text = " ";
    for (std::size_t i = 0; i < line.size(); ++i) {
      text += (i == 0 ? " " : "   ") + Pad(line[i], widths[i], to_the_right[i]);
    }
    return WithoutTrailingBlanks(text);
  }

  std::string Lines(const Colours& colours) const {
    std::string text = colours.Heading(Line(lines.front())) + "\n";
    for (std::size_t i = 1; i < lines.size(); ++i) text += Line(lines[i]) + "\n";
    return text;
  }
};

std::string TableLines(const std::vector<Row>& table, const Colours& colours) {
  if (table.empty()) return "";
  Cells cells;
  std::vector<std::string> heading = Labels(table.front().fields);
  heading.insert(heading.begin(), "");
  cells.to_the_right.assign(heading.size(), true);
  cells.to_the_right.front() = false;
  cells.Add(std::move(heading));
  for (const Row& row : table) {
    std::vector<std::string> line = {Label(row.name)};
    for (const Field& field : row.fields) line.push_back(Text(field, FormatAligned));
    cells.Add(std::move(line));
  }
  return cells.Lines(colours);
}

// A cell of a list; whole numbers, such as ids, have no fraction.
std::string ListCell(const Field& field) {
  return field.value.index() == 0
             ? "-"
             : Text(field, std::holds_alternative<double>(field.value) ? FormatAligned : FormatNumber);
}

std::string ListLines(const List& list, const Colours& colours) {
  if (list.rows.empty()) return "  no " + Label(list.name) + "\n";
  Cells cells;
  cells.to_the_right.resize(list.rows.front().size());
  cells.Add(Labels(list.rows.front()));
  for (const auto& row : list.rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      cells.to_the_right[i] = cells.to_the_right[i] || IsNumber(row[i].value);
    }
    std::vector<std::string> line;
    line.reserve(row.size());
    for (const Field& field : row) line.push_back(ListCell(field));
    cells.Add(std::move(line));
  }
  return cells.Lines(colours);
}

// Several lists are told apart by their names.
std::string AllLists(const std::vector<List>& lists, const Colours& colours) {
  std::string text;
  for (const List& list : lists) {
    if (lists.size() > 1 && !list.rows.empty()) text += Label(list.name) + "\n";
    text += ListLines(list, colours);
  }
  return text;
}

}  // namespace

std::string Colours::Paint(const char* code, const std::string& text) const {
  return on_ && !text.empty() ? "\x1b[" + std::string(code) + "m" + text + "\x1b[0m" : text;
}

bool IsTerminal(int descriptor) {
  const char* terminal = std::getenv("TERM");
  return isatty(descriptor) == 1 && terminal && std::string(terminal) != "dumb";
}

Colours ColoursFor(int descriptor) {
  const char* refused = std::getenv("NO_COLOR");
  return Colours(IsTerminal(descriptor) && !(refused && *refused));
}

std::string Asked(const Result& result) {
  std::string text;
  for (const Field& field : result.arguments) {
    const bool* flag = std::get_if<bool>(&field.value);
    if (field.assumed || field.value.index() == 0 || (flag && !*flag)) continue;
    text += (text.empty() ? "" : ", ") + Label(field.name) + (flag ? "" : " " + Text(field));
  }
  return text.empty() ? result.command : result.command + ": " + text;
}

std::string HumanText(const Result& result, const Colours& colours) {
  const std::string answers =
      AnswerLines(result.answers) + TableLines(result.table, colours) + AllLists(result.lists, colours);
  return colours.Heading(Asked(result)) +
         (answers.empty() ? ": " + colours.Good("done") + "\n" : "\n" + answers);
}

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
    text += "   " + Label(row.name);
    add(row.fields);
  }
  return text + "\n";
}

std::string EventLine(const Result& result, const Colours& colours) {
  std::string text;
  for (const Field& field : result.answers) {
    if (field.value.index() == 0 || field.assumed) continue;
    text += (text.empty() ? "" : "  ") + colours.Quiet(Label(field.name)) + " " + Text(field);
  }
  return text + "\n";
}

std::string FormatNumber(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10g", number);
  return text;
}

std::string Quoted(const std::string& text) {
  constexpr std::size_t kLongest = 64;
  const bool is_plain = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
  return is_plain && text.size() <= kLongest ? "\"" + text + "\"" : "that was given";
}

}  // namespace vptzctl
