// Replies of every size into the 512 bytes that a command has for them.
#include <algorithm>
#include <vector>

#include "reliability/bus_reliability.h"

namespace vptz_test {
namespace {

constexpr std::size_t kCapacity = 512;
constexpr char kCanary = '\x5a';

class ReplySize : public BusReliability, public testing::WithParamInterface<std::size_t> {
 protected:
  static bool IsUntouched(const std::string& bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == kCanary; });
  }
};

TEST_P(ReplySize, FitsOrIsRefusedAndNothingIsWrittenBehindTheBuffer) {
  const std::string sent(GetParam(), 'r');
  const auto service = Serve([&](bus_service*, bus_request* request) { Reply(request, sent); });
  const auto client = Connected();
  std::string memory(kCapacity + 4096, kCanary);
  int length = kCapacity;
  const int code = client->CallSync("echo", "x", 1, memory.data(), &length, 10);
  if (sent.size() <= kCapacity) {
    EXPECT_EQ(code, 0);
    EXPECT_EQ(static_cast<std::size_t>(length), sent.size());
    EXPECT_EQ(memory.substr(0, sent.size()), sent);
    EXPECT_TRUE(IsUntouched(memory.substr(sent.size())));
  } else {
    EXPECT_EQ(code, -EMSGSIZE);
    EXPECT_EQ(length, static_cast<int>(kCapacity));
    EXPECT_TRUE(IsUntouched(memory));
    EXPECT_EQ(client->GetStatus(10), -EMSGSIZE);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, ReplySize, testing::Values(0, 1, 511, 512, 513, 65536, 1048576),
                         [](const auto& info) { return std::to_string(info.param) + "Bytes"; });

}  // namespace
}  // namespace vptz_test
