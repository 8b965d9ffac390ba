#include "protocols.h"

#include <algorithm>

#include <vptz/model/protocol.h>
#include <vptz/model/vptzmodel.h>

#include "arguments.h"
#include "failures.h"
#include "people.h"

namespace vptzctl {

const std::vector<std::string>& KnownProtocols() {
  static const std::vector<std::string> names = {"ONVIF", "RS232", "QX310", "NDI", "VISCA_OVER_IP", "NDIHX"};
  return names;
}

std::vector<std::string> AllProtocols() {
  std::vector<std::string> names = KnownProtocols();
  std::vector<Protocol*> rows;
  Protocol::QueryAll(&rows, 0, 0);
  for (const Protocol* row : rows) {
    if (std::find(names.begin(), names.end(), row->name()) == names.end()) names.push_back(row->name());
  }
  VptzModel::CleanQuery(&rows);
  return names;
}

std::string SpelledProtocol(const std::string& text) {
  for (const std::string& name : AllProtocols()) {
    if (EqualIgnoringCase(name, text)) return name;
  }
  return "";
}

std::string ProtocolOrText(const std::string& text) {
  const std::string spelled = SpelledProtocol(text);
  return spelled.empty() ? text : spelled;
}

std::string RequireProtocol(const std::string& text) {
  std::string spelled = SpelledProtocol(text);
  if (spelled.empty()) throw CommandError({"unknown_protocol", NoSuchProtocol(text), ExitCode::kDatabase});
  return spelled;
}

std::string NoSuchProtocol(const std::string& text) {
  return "there is no protocol " + Quoted(text) + "; there are " + Joined(AllProtocols(), ", ");
}

}  // namespace vptzctl
