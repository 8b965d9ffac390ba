#include <vptz/vptz_client.h>

int main() {
  VptzClient client;
  return client.AbsolutePanMove(1, 10.0, 5.0) == -1 && client.QueryDeviceAll() != nullptr ? 0 : 1;
}
