// Takes the members of an object out of a document, one by one.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_FIELDS_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_FIELDS_H

#include <chrono>
#include <set>
#include <string>

#include "drivers/simulated/document.h"

namespace vptzd {

// Throws DocumentError for every value that is not as it is to be. The object
// outlives it.
class Fields {
 public:
  // `what` names the object in messages. Throws when it is none.
  Fields(const Value& object, const std::string& what);

  // Null when the member is missing.
  const Value* Take(const std::string& name);
  // A list; null when it is missing.
  const Value* TakeList(const std::string& name);

  // Each leaves the variable alone when the member is missing, and tells
  // whether it is there.
  bool Take(const std::string& name, std::string* text);
  bool Take(const std::string& name, bool* flag);
  bool Take(const std::string& name, double* number, double min, double max);
  // A whole number.
  bool Take(const std::string& name, int* number, int min, int max);
  // A whole number of milliseconds up to ten minutes.
  bool Take(const std::string& name, std::chrono::milliseconds* time);

  // Throws when the object holds what nobody has asked for.
  void ExpectNothingMore() const;

  [[noreturn]] void Fail(const Value& at, const std::string& name, const std::string& reason) const;

 private:
  const Value* TakeOf(Value::Kind kind, const std::string& name, const char* wanted);

  const Value& object_;
  std::string what_;
  std::set<std::string> taken_;
};

}  // namespace vptzd

#endif
