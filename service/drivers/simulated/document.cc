#include "drivers/simulated/document.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include <nlohmann/json.hpp>

namespace vptzd {
namespace {

constexpr std::size_t kMaxDepth = 32;

// How far the text has been read.
struct Reading {
  std::size_t line = 1;
  bool at_line_begin = false;
};

// Hands the text to the parser and counts its lines.
class Cursor {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Cursor(const char* at, Reading* reading) : at_(at), reading_(reading) {}
  reference operator*() const { return *at_; }
  Cursor& operator++() {
    reading_->at_line_begin = *at_ == '\n';
    if (reading_->at_line_begin) ++reading_->line;
    ++at_;
    return *this;
  }
  friend bool operator!=(const Cursor& a, const Cursor& b) { return a.at_ != b.at_; }

 private:
  const char* at_;
  Reading* reading_;
};

// Builds the values from what the parser meets.
class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit Builder(const Reading& reading) : reading_(reading) {}

  Value Take() { return std::move(root_); }

  bool null() override { return Add(New(Value::Kind::kNull)); }
  bool boolean(bool boolean) override {
    Value value = New(Value::Kind::kBoolean);
    value.boolean = boolean;
    return Add(std::move(value));
  }
  bool number_integer(number_integer_t number) override { return AddNumber(static_cast<double>(number)); }
  bool number_unsigned(number_unsigned_t number) override { return AddNumber(static_cast<double>(number)); }
  bool number_float(number_float_t number, const string_t&) override { return AddNumber(number); }
  bool string(string_t& text) override {
    Value value = New(Value::Kind::kText);
    value.text = std::move(text);
    return Add(std::move(value));
  }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(Value::Kind::kObject); }
  bool start_array(std::size_t) override { return Open(Value::Kind::kList); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }
  bool key(string_t& name) override {
    Value& object = open_.back();
    if (std::count(object.names.begin(), object.names.end(), name) > 0) {
      throw DocumentError(reading_.line, "\"" + name + "\" is there twice");
    }
    object.names.push_back(name);
    return true;
  }
  bool parse_error(std::size_t, const std::string& last, const nlohmann::detail::exception&) override {
    throw DocumentError(Line(), last.empty() ? "this is no JSON" : "this is no JSON, near '" + last + "'");
  }

 private:
  // The parser reads ahead behind a number, and when it meets what does not fit.
  std::size_t Line() const { return reading_.line - (reading_.at_line_begin ? 1 : 0); }

  Value New(Value::Kind kind) const {
    Value value;
    value.kind = kind;
    value.line = Line();
    return value;
  }

  bool AddNumber(double number) {
    Value value = New(Value::Kind::kNumber);
    value.number = number;
    return Add(std::move(value));
  }

  bool Add(Value value) {
    if (open_.empty()) {
      root_ = std::move(value);
    } else {
      open_.back().items.push_back(std::move(value));
    }
    return true;
  }

  bool Open(Value::Kind kind) {
    if (open_.size() == kMaxDepth) throw DocumentError(Line(), "too many values in one another");
    open_.push_back(New(kind));
    return true;
  }

  bool Close() {
    Value value = std::move(open_.back());
    open_.pop_back();
    return Add(std::move(value));
  }

  const Reading& reading_;
  Value root_;
  std::vector<Value> open_;
};

}  // namespace

const Value* Value::Find(const std::string& name) const {
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? nullptr : &items[static_cast<std::size_t>(found - names.begin())];
}

Value ParseDocument(const std::string& text) {
  Reading reading;
  Builder builder(reading);
  nlohmann::json::sax_parse(Cursor(text.data(), &reading), Cursor(text.data() + text.size(), &reading),
                            &builder);
  return builder.Take();
}

}  // namespace vptzd
