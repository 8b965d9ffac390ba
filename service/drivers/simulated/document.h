// A JSON text whose values know the line on which they stand, so that a mistake
// in it can be told with its place.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_DOCUMENT_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_DOCUMENT_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace vptzd {

class DocumentError : public std::runtime_error {
 public:
  DocumentError(std::size_t line, const std::string& reason) : std::runtime_error(reason), line_(line) {}
  std::size_t line() const { return line_; }

 private:
  std::size_t line_;
};

struct Value {
  enum class Kind { kNull, kBoolean, kNumber, kText, kList, kObject };

  Kind kind = Kind::kNull;
  std::size_t line = 0;
  bool boolean = false;
  double number = 0.0;
  std::string text;
  std::vector<Value> items;
  std::vector<std::string> names;  // of an object, in the order of `items`

  // An object's member; null when it has none of that name.
  const Value* Find(const std::string& name) const;
};

// Throws DocumentError for a text that is no JSON, or names a member twice.
Value ParseDocument(const std::string& text);

}  // namespace vptzd

#endif
