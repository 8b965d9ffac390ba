#include <cerrno>
#include <vector>

#include "contract/bus_fixture.h"

namespace vptz_test {
namespace {

struct BadName {
  const char* what;
  std::string text;
};

const std::vector<BadName>& BadNames() {
  static const std::vector<BadName> names = {
      {"empty", ""},
      {"single-level wildcard", "+"},
      {"multi-level wildcard", "#"},
      {"wildcard inside", "a+b"},
      {"wildcard behind", "a/#"},
      {"leading dollar", "$SYS"},
      {"dollar alone", "$"},
      {"line feed", "a\nb"},
      {"tabulator", "\t"},
      {"first control character", "\x01"},
      {"last control character", "a\x1f"},
      {"delete", "\x7f"},
      {"control character of two bytes", "\xc2\x85"},
      {"no UTF-8", "\xff"},
      {"continuation byte alone", "a\x80"},
      {"sequence cut off", "a\xe2\x82"},
      {"overlong slash", "\xc0\xaf"},
      {"surrogate", "\xed\xa0\x80"},
      {"beyond the last code point", "\xf4\x90\x80\x80"},
      {"256 bytes", std::string(256, 'n')},
      {"256 bytes of two-byte letters",
       [] {
         std::string text;
         for (int i = 0; i < 128; ++i) text += "\xc3\xa4";
         return text;
       }()},
      {"64 KiB", std::string(65536, 'n')},
  };
  return names;
}

int SyncCall(bus_client* client, const char* service, const char* method) {
  char reply[16];
  int length = sizeof reply;
  return bus_method_call_sync(client, service, method, "x", 1, reply, &length, 10);
}

class BusArguments : public BusContract {
 protected:
  // Every function that takes a service name.
  void ExpectServiceRefused(bus_client* client, const char* name, const std::string& what) {
    bus_callback callback = TheReceiver(0).callback;
    EXPECT_EQ(SyncCall(client, name, "echo"), -EINVAL) << what;
    EXPECT_EQ(bus_method_call_async(client, name, "echo", "x", 1, callback, 10), -EINVAL) << what;
    EXPECT_EQ(bus_signal_subscribe(client, name, "moved", callback), -EINVAL) << what;
    EXPECT_EQ(bus_signal_subscribe_all(client, name, callback), -EINVAL) << what;
    EXPECT_EQ(bus_signal_unsubscribe(client, name, "moved"), -EINVAL) << what;
  }

  // Every function that takes a method or signal name.
  void ExpectMemberRefused(bus_client* client, const char* name, const std::string& what) {
    bus_callback callback = TheReceiver(0).callback;
    EXPECT_EQ(SyncCall(client, "camera", name), -EINVAL) << what;
    EXPECT_EQ(bus_method_call_async(client, "camera", name, "x", 1, callback, 10), -EINVAL) << what;
    EXPECT_EQ(bus_signal_subscribe(client, "camera", name, callback), -EINVAL) << what;
    EXPECT_EQ(bus_signal_unsubscribe(client, "camera", name), -EINVAL) << what;
  }
};

TEST_F(BusArguments, IllFormedServiceNamesAreRefused) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  ExpectServiceRefused(client.get(), nullptr, "null");
  ExpectServiceRefused(client.get(), "a/b", "slash");
  for (const BadName& name : BadNames()) ExpectServiceRefused(client.get(), name.text.c_str(), name.what);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "still works").reply, "still works");
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
}

TEST_F(BusArguments, IllFormedMethodAndSignalNamesAreRefused) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  ExpectMemberRefused(client.get(), nullptr, "null");
  for (const BadName& name : BadNames()) ExpectMemberRefused(client.get(), name.text.c_str(), name.what);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "still works").reply, "still works");
  EXPECT_FALSE(service->WaitKept(1, milliseconds(0)));
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
}

TEST_F(BusArguments, IllFormedNamesAreRefusedWithoutAConnectionToo) {
  const ClientPtr client = NewClient();
  for (const BadName& name : BadNames()) {
    ExpectServiceRefused(client.get(), name.text.c_str(), name.what);
    ExpectMemberRefused(client.get(), name.text.c_str(), name.what);
  }
}

TEST_F(BusArguments, NoClientIsMadeWithAnIllFormedName) {
  EXPECT_EQ(bus_client_new(nullptr), nullptr);
  for (const BadName& name : BadNames()) EXPECT_EQ(bus_client_new(name.text.c_str()), nullptr) << name.what;
}

TEST_F(BusArguments, NullClientIsRefusedEverywhere) {
  ExpectServiceRefused(nullptr, "camera", "null client");
  ExpectMemberRefused(nullptr, "moved", "null client");
  EXPECT_EQ(bus_connect(nullptr, peer_->address().c_str()), -EINVAL);
  EXPECT_EQ(bus_disconnect(nullptr), -EINVAL);
  bus_client_free(nullptr);
}

TEST_F(BusArguments, NullBuffersAndNegativeLengthsAreRefused) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  bus_client* c = client.get();
  char reply[16] = "untouched";
  int length = sizeof reply;
  int negative = -1;
  EXPECT_EQ(bus_method_call_sync(c, "camera", "echo", nullptr, 1, reply, &length, 10), -EINVAL);
  EXPECT_EQ(bus_method_call_sync(c, "camera", "echo", "x", -1, reply, &length, 10), -EINVAL);
  EXPECT_EQ(bus_method_call_sync(c, "camera", "echo", "x", 1, nullptr, &length, 10), -EINVAL);
  EXPECT_EQ(bus_method_call_sync(c, "camera", "echo", "x", 1, reply, &negative, 10), -EINVAL);
  EXPECT_EQ(bus_method_call_sync(c, "camera", "echo", "x", 1, reply, nullptr, 10), -EINVAL);
  EXPECT_EQ(length, 16);
  EXPECT_EQ(negative, -1);
  EXPECT_STREQ(reply, "untouched");
}

TEST_F(BusArguments, AsynchronousCallsAreCheckedAlike) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  bus_callback callback = TheReceiver(0).callback;
  EXPECT_EQ(bus_method_call_async(client.get(), "camera", "keep", nullptr, 1, callback, 10), -EINVAL);
  EXPECT_EQ(bus_method_call_async(client.get(), "camera", "keep", "x", -1, callback, 10), -EINVAL);
  EXPECT_EQ(bus_method_call_async(client.get(), "camera", "keep", "x", 1, nullptr, 10), -EINVAL);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_FALSE(service->WaitKept(1, milliseconds(0)));
}

TEST_F(BusArguments, SubscriptionsNeedACallback) {
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", nullptr), -EINVAL);
  EXPECT_EQ(bus_signal_subscribe_all(client.get(), "camera", nullptr), -EINVAL);
  EXPECT_EQ(bus_signal_unsubscribe(client.get(), "camera", "moved"), -ENOENT);
}

}  // namespace
}  // namespace vptz_test
