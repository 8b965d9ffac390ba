// A table of the database as the registry reads it: which columns, by name, and where
// each goes. A column's place in the statement follows from the list, so columns may
// be added anywhere. The compiler works all of it out.
#ifndef VPTZ_SRC_VPTZ_DEVICE_TABLE_H
#define VPTZ_SRC_VPTZ_DEVICE_TABLE_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace vptz {

// A column whose value goes to a member.
template <class Row, class Value>
struct Column {
  constexpr Column(const char* name_, Value Row::*member_) : name(name_), member(member_) {}

  template <class Cursor>
  void Read(const Cursor& cursor, int place, Row& row) const {
    cursor.Read(place, row.*member);
  }

  const char* name;
  Value Row::*member;
};

// A column with a name that rows are looked for by: a blob equals none.
template <class Row>
struct KeyText {
  constexpr KeyText(const char* name_, std::string Row::*member_) : name(name_), member(member_) {}

  template <class Cursor>
  void Read(const Cursor& cursor, int place, Row& row) const {
    if (cursor.IsText(place)) cursor.Read(place, row.*member);
  }

  const char* name;
  std::string Row::*member;
};

// The only column of which there is something to keep.
struct OnlyColumn {
  template <class Cursor, class Row>
  void Read(const Cursor& cursor, int place, Row& row) const {
    cursor.Read(place, row);
  }

  const char* name;
};

// A column that is read by the place that PlaceOf gives.
struct OtherColumn {
  template <class Cursor, class Row>
  void Read(const Cursor&, int, Row&) const {}

  const char* name;
};

// The statement for all rows, in their order, and what to do with each. The column of
// the owner comes first.
template <class... Columns>
class Table {
 public:
  constexpr Table(const char* table, const char* owner, Columns... columns) : columns_(columns...) {
    Append("SELECT \"");
    Append(owner);
    ((Append("\", \""), Append(columns.name)), ...);
    Append("\" FROM \"");
    Append(table);
    Append("\" ORDER BY \"id\"");
  }

  constexpr const char* select() const { return select_; }

  // Where the column stands in the statement. Does not compile for one that is not
  // in the list, when the result is a constant.
  constexpr int PlaceOf(std::string_view name) const {
    int place = 0;
    int found = 0;
    std::apply([&](const auto&... column) { ((++place, found = column.name == name ? place : found), ...); },
               columns_);
    return found != 0 ? found : throw std::out_of_range("no such column");
  }

  // Copies the columns behind the owner's.
  template <class Cursor, class Row>
  void Read(const Cursor& cursor, Row& row) const {
    ReadAll(cursor, row, std::index_sequence_for<Columns...>());
  }

 private:
  static constexpr std::size_t kLongest = 400;  // a longer one does not compile

  constexpr void Append(const char* text) {
    while (*text != '\0') select_[length_++] = *text++;
    select_[length_] = '\0';
  }

  template <class Cursor, class Row, std::size_t... Index>
  void ReadAll(const Cursor& cursor, Row& row, std::index_sequence<Index...>) const {
    (std::get<Index>(columns_).Read(cursor, static_cast<int>(Index) + 1, row), ...);
  }

  std::tuple<Columns...> columns_;
  char select_[kLongest] = {};
  std::size_t length_ = 0;
};

}  // namespace vptz

#endif
