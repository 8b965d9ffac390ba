// The C functions of the client half: no exception leaves them, and the client
// lives until the last of them has returned.
#include <atomic>
#include <cerrno>
#include <new>
#include <system_error>

#include "client.h"
#include "mosquitto_library.h"
#include "names.h"

namespace {

std::atomic<int> init_count{0};

template <class Body>
int Guarded(bus_client* client, Body body) {
  if (client == nullptr) {
    return -EINVAL;
  }
  if (!client->InItsProcess()) {
    return -ENOTCONN;
  }
  try {
    return body(*client->shared_from_this());
  } catch (const std::bad_alloc&) {
    return -ENOMEM;
  } catch (const std::system_error& error) {
    return -error.code().value();  // the system has no thread left
  }
}

}  // namespace

int bus_init() {
  const int result = dorv::AcquireLibrary();
  if (result == 0) {
    ++init_count;
  }
  return result;
}

void bus_cleanup() {
  int count = init_count;
  while (count > 0 && !init_count.compare_exchange_weak(count, count - 1)) {
  }
  if (count > 0) {
    dorv::ReleaseLibrary();
  }
}

bus_client* bus_client_new(const char* name) {
  if (!dorv::IsName(name) || dorv::AcquireLibrary() < 0) {
    return nullptr;
  }
  try {
    const auto client = std::make_shared<bus_client>(name);  // its destructor releases the library
    if (!client->valid()) {
      return nullptr;
    }
    client->Keep();
    return client.get();
  } catch (const std::bad_alloc&) {
    dorv::ReleaseLibrary();
    return nullptr;
  }
}

void bus_client_free(bus_client* client) {
  if (client != nullptr && client->InItsProcess()) {
    const auto keep = client->shared_from_this();
    keep->Free();
  }
}

int bus_connect(bus_client* client, const char* address) {
  return Guarded(client, [&](bus_client& self) { return self.Connect(address); });
}

int bus_disconnect(bus_client* client) {
  return Guarded(client, [](bus_client& self) { return self.Disconnect(); });
}

int bus_method_call_sync(bus_client* client, const char* service, const char* method, const void* request,
                         int request_length, void* reply, int* reply_length, int timeout) {
  return Guarded(client, [&](bus_client& self) {
    return self.Call(service, method, request, request_length, reply, reply_length, timeout);
  });
}

int bus_method_call_async(bus_client* client, const char* service, const char* method, const void* request,
                          int request_length, bus_callback callback, int timeout) {
  return Guarded(client, [&](bus_client& self) {
    return self.CallLater(service, method, request, request_length, callback, timeout);
  });
}

int bus_signal_subscribe(bus_client* client, const char* service, const char* signal, bus_callback callback) {
  if (!dorv::IsServiceName(service) || !dorv::IsName(signal) || callback == nullptr) {
    return -EINVAL;
  }
  return Guarded(client, [&](bus_client& self) { return self.Subscribe(service, signal, callback); });
}

int bus_signal_subscribe_all(bus_client* client, const char* service, bus_callback callback) {
  if (!dorv::IsServiceName(service) || callback == nullptr) {
    return -EINVAL;
  }
  return Guarded(client, [&](bus_client& self) { return self.Subscribe(service, "", callback); });
}

int bus_signal_unsubscribe(bus_client* client, const char* service, const char* signal) {
  if (!dorv::IsServiceName(service) || !dorv::IsName(signal)) {
    return -EINVAL;
  }
  return Guarded(client, [&](bus_client& self) { return self.Unsubscribe(service, signal); });
}
