// Reads the database without the service: the presets of every device, and all
// that point to the right.
#include <cstdio>
#include <vector>

#include <vptz/model/device.h>
#include <vptz/model/ptz.h>
#include <vptz/model/vptzmodel.h>
#include <vptz/model/preset-odb.hxx>

namespace {

// Frees what a list query brought.
template <class Row>
struct Rows : std::vector<Row*> {
  ~Rows() { VptzModel::CleanQuery(this); }
};

void PrintPresets(const Device& device) {
  Rows<Ptz> nodes;
  Ptz::QueryByDevice(&nodes, device.id(), 0, 65535);
  for (const Ptz* node : nodes) {
    Rows<Preset> presets;
    Preset::QueryByPtz(&presets, node->id(), 0, 65535);
    for (const Preset* preset : presets) {
      std::printf("%u %s: %u %s\n", device.id(), node->node().c_str(), preset->preset_id(),
                  preset->name().c_str());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 || VptzModel::Instance().Connect(argv[1]) != 0) {
    std::fprintf(stderr, "usage: database FILE; the file must be there\n");
    return 1;
  }
  Rows<Device> devices;
  Device::QueryAll(&devices, 0, 65535);
  for (const Device* device : devices) PrintPresets(*device);

  Rows<Preset> right;
  VptzModel::QueryObjects<Preset>(odb::query<Preset>::pan > 0.0, &right);
  std::printf("%zu presets point to the right\n", right.size());
  VptzModel::Instance().Release();
  return 0;
}
