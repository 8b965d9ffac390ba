#include "drivers/simulated/fault_list.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include <vptz/method_names.h>
#include <nlohmann/json.hpp>

#include "drivers/simulated/fields.h"

namespace vptzd {
namespace {

using Json = nlohmann::ordered_json;

struct KindName {
  const char* name;
  FaultKind kind;
  int milliseconds;  // without "milliseconds"; 0: they mean nothing
};

constexpr KindName kKinds[] = {
    {"offline", FaultKind::kOffline, 0},
    {"refuse_login", FaultKind::kRefuseLogin, 0},
    {"forget_presets", FaultKind::kForgetPresets, 0},
    {"lose_power", FaultKind::kLosePower, 500},
    {"delay", FaultKind::kDelay, 1000},
    {"drop", FaultKind::kDrop, 0},
    {"oversize", FaultKind::kOversize, 0},
    {"garble", FaultKind::kGarble, 0},
};

void TakeCamera(Fields& fields, std::size_t cameras, Fault* fault) {
  const Value* camera = fields.Take("camera");
  if (camera == nullptr) return;
  if (camera->kind == Value::Kind::kText) {
    fault->camera_name = camera->text;
    if (camera->text.empty()) fields.Fail(*camera, "camera", "is empty");
    return;
  }
  int number = 0;
  fields.Take("camera", &number, 1, static_cast<int>(cameras));
  fault->camera_number = static_cast<std::uint32_t>(number);
}

void TakeMethod(Fields& fields, Fault* fault) {
  if (!fields.Take("method", &fault->method)) return;
  const auto same = [&](const char* method) { return method == fault->method; };
  if (std::any_of(vptz::method::kAll.begin(), vptz::method::kAll.end(), same)) return;
  fields.Fail(*fields.Take("method"), "method", "is no method of the service");
}

void TakeKind(Fields& fields, const Value& at, Fault* fault) {
  std::string name;
  fields.Take("kind", &name);
  const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [&](const KindName& known) { return name == known.name; });
  if (kind == std::end(kKinds)) {
    fields.Fail(at, "kind",
                "is to be offline, refuse_login, forget_presets, lose_power, delay, drop, oversize or garble");
  }
  fault->kind = kind->kind;
  fault->time = std::chrono::milliseconds(kind->milliseconds);
}

Fault ReadFault(const Value& value, std::size_t cameras) {
  Fields fields(value, "a fault");
  Fault fault;
  TakeKind(fields, value, &fault);
  fields.Take("milliseconds", &fault.time);
  TakeCamera(fields, cameras, &fault);
  TakeMethod(fields, &fault);
  fields.ExpectNothingMore();
  return fault;
}

Json JsonOf(const Fault& fault) {
  const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [&](const KindName& known) { return fault.kind == known.kind; });
  Json json = {{"kind", kind->name}};
  if (fault.camera_number != 0) json["camera"] = fault.camera_number;
  if (!fault.camera_name.empty()) json["camera"] = fault.camera_name;
  if (!fault.method.empty()) json["method"] = fault.method;
  if (kind->milliseconds != 0) json["milliseconds"] = fault.time.count();
  return json;
}

}  // namespace

std::vector<Fault> ReadFaults(const Value& list, std::size_t cameras) {
  std::vector<Fault> faults;
  for (const Value& fault : list.items) faults.push_back(ReadFault(fault, cameras));
  return faults;
}

std::string TextOf(const std::vector<Fault>& faults) {
  Json list = Json::array();
  for (const Fault& fault : faults) list.push_back(JsonOf(fault));
  return Json{{"faults", list}}.dump();
}

std::optional<std::vector<Fault>> ReadFaultSwitch(const std::string& text, std::size_t cameras) {
  if (text.empty()) return std::nullopt;
  if (text.size() > kMaxFaultText) throw DocumentError(1, "the text is too long");
  const Value document = ParseDocument(text);
  Fields fields(document, "the request");
  const Value* list = fields.TakeList("faults");
  fields.ExpectNothingMore();
  if (list == nullptr) return std::nullopt;
  if (list->items.size() > kMaxFaults) throw DocumentError(list->line, "at most 256 faults are in force");
  return ReadFaults(*list, cameras);
}

}  // namespace vptzd
