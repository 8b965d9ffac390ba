#include "drivers/simulated/fields.h"

#include <cmath>
#include <cstdio>

namespace vptzd {
namespace {

constexpr int kMaxMilliseconds = 600000;
constexpr std::size_t kMaxTextLength = 255;

std::string Shown(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", number);
  return text;
}

}  // namespace

Fields::Fields(const Value& object, const std::string& what) : object_(object), what_(what) {
  if (object.kind != Value::Kind::kObject) throw DocumentError(object.line, what + " is to be an object");
}

void Fields::Fail(const Value& at, const std::string& name, const std::string& reason) const {
  throw DocumentError(at.line, "\"" + name + "\" of " + what_ + " " + reason);
}

const Value* Fields::Take(const std::string& name) {
  taken_.insert(name);
  return object_.Find(name);
}

const Value* Fields::TakeOf(Value::Kind kind, const std::string& name, const char* wanted) {
  const Value* value = Take(name);
  if (value != nullptr && value->kind != kind) Fail(*value, name, std::string("is to be ") + wanted);
  return value;
}

const Value* Fields::TakeList(const std::string& name) { return TakeOf(Value::Kind::kList, name, "a list"); }

bool Fields::Take(const std::string& name, std::string* text) {
  const Value* value = TakeOf(Value::Kind::kText, name, "a text");
  if (value == nullptr) return false;
  if (value->text.size() > kMaxTextLength) Fail(*value, name, "is longer than 255 bytes");
  *text = value->text;
  return true;
}

bool Fields::Take(const std::string& name, bool* flag) {
  const Value* value = TakeOf(Value::Kind::kBoolean, name, "true or false");
  if (value != nullptr) *flag = value->boolean;
  return value != nullptr;
}

bool Fields::Take(const std::string& name, double* number, double min, double max) {
  const Value* value = TakeOf(Value::Kind::kNumber, name, "a number");
  if (value == nullptr) return false;
  if (!(value->number >= min && value->number <= max)) {
    Fail(*value, name, "is to be " + Shown(min) + " to " + Shown(max));
  }
  *number = value->number;
  return true;
}

bool Fields::Take(const std::string& name, int* number, int min, int max) {
  double value = 0.0;
  if (!Take(name, &value, min, max)) return false;
  if (value != std::floor(value)) Fail(*object_.Find(name), name, "is to be a whole number");
  *number = static_cast<int>(value);
  return true;
}

bool Fields::Take(const std::string& name, std::chrono::milliseconds* time) {
  int number = 0;
  const bool there = Take(name, &number, 0, kMaxMilliseconds);
  if (there) *time = std::chrono::milliseconds(number);
  return there;
}

void Fields::ExpectNothingMore() const {
  for (std::size_t i = 0; i < object_.names.size(); ++i) {
    if (taken_.count(object_.names[i]) == 0) {
      throw DocumentError(object_.items[i].line, what_ + " has no \"" + object_.names[i] + "\"");
    }
  }
}

}  // namespace vptzd
