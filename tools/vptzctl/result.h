// What a verb has learnt, described for every form of output.
#ifndef VPTZCTL_RESULT_H
#define VPTZCTL_RESULT_H

#include <string>
#include <vector>

#include "value.h"

namespace vptzctl {

struct Field {
  std::string name;  // key in JSON; people see blanks for its '_'
  Value value;
  std::string unit;
  bool steady = true;    // false: may change from reading to reading
  bool assumed = false;  // people need not see it: an argument that was not given, a part of an event
};

struct Row {
  std::string name;
  std::vector<Field> fields;  // every row of a table has the same ones
};

// Any number of things of one kind; an array in JSON.
struct List {
  std::string name;
  std::vector<std::vector<Field>> rows;  // each has the same fields
};

struct Result {
  std::string command;           // empty when the command line is wrong
  std::vector<Field> arguments;  // what was asked
  std::vector<Field> answers;    // what was learnt
  std::vector<Row> table;        // what was learnt of several things with fixed names
  std::vector<List> lists;

  // Gives an argument another value than the command line.
  void SetArgument(const std::string& name, const Value& value) {
    for (Field& field : arguments) {
      if (field.name == name) field = {field.name, value, field.unit};
    }
  }
};

}  // namespace vptzctl

#endif
