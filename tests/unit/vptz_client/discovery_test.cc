#include "vptz_client/command_test.h"

namespace {

using vptz_test::CommandCase;
using vptz_test::CommandTest;

const CommandCase kDiscovery[] = {
    {"GetStatus", "get_status", "", [](VptzClient& client, int timeout) { return client.GetStatus(timeout); }},
};

INSTANTIATE_TEST_SUITE_P(Discovery, CommandTest, testing::ValuesIn(kDiscovery), vptz_test::CommandName);

}  // namespace
