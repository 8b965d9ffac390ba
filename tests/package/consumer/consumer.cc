#include <cstdio>
#include <string>
#include <vector>

#include <vptz/model/vptzmodel.h>
#include <vptz/vptz_client.h>
#include <vptz/model/preset-odb.hxx>

namespace {

int Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  return 1;
}

// A condition of one's own and a setting, which no class inserts by itself.
int UseDatabase(const char* file) {
  std::remove(file);
  if (VptzModel::Instance().Initialize(file, "vptz", "") != 0) return Fail("no database");
  Preset preset(nullptr, 7, "desk", "speaker's desk", 100.0, 0.0, 1.0);
  if (Preset::Add(&preset) < 1) return Fail("a preset was not stored");
  std::vector<Preset*> found;
  if (VptzModel::QueryObjects<Preset>(odb::query<Preset>::pan > 90.0, &found) != 0) return Fail("no preset");
  const bool right = found.size() == 1 && found[0]->token() == "desk";
  VptzModel::CleanQuery(&found);
  VptzModel::Instance().Release();
  return right ? 0 : Fail("another preset");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return Fail("usage: consumer FILE");
  VptzClient client;
  if (std::string(client.Version()) != "0.1.0") return Fail("another version");
  if (client.AbsolutePanMove(1, 10.0, 5.0) != -1) return Fail("sent without a connection");
  if (!client.QueryDeviceByProtocol("NO_SUCH_PROTOCOL").empty()) return Fail("devices of no protocol");
  CVptzDevice device;
  if (device.PanTiltStop(1) != -1) return Fail("sent without a client");
  return UseDatabase(argv[1]);
}
