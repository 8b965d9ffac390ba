#include <vptz/model/setting-odb.hxx>

#include <memory>

#include "model/model_access.h"

template int VptzModel::Add(Setting* object);

namespace {

std::unique_ptr<Setting> Find(const std::string& name) {
  Setting* setting = nullptr;
  Setting::Query(name, &setting);
  return std::unique_ptr<Setting>(setting);
}

}  // namespace

Setting::Setting(const std::string& name, const std::string& value) : name_(name), value_(value) {}

int Setting::Query(const std::string& name, Setting** setting) {
  return vptz::ModelAccess::FindObject(name, setting);
}

int Setting::QueryValue(const std::string& name, std::string* value) {
  const std::unique_ptr<Setting> setting = Find(name);
  if (setting == nullptr) {
    return -1;
  }
  *value = setting->value();
  return 0;
}

int Setting::QueryValue(const std::string& name, int* value) {
  const std::unique_ptr<Setting> setting = Find(name);
  if (setting == nullptr) {
    return -1;
  }
  *value = std::stoi(setting->value());
  return 0;
}

int Setting::Save() { return VptzModel::Update(*this); }
