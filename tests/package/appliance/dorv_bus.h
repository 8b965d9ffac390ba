/* What the library needs of an appliance's bus, and no more. */
#ifndef DORV_BUS_H
#define DORV_BUS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct bus_client bus_client;
typedef void (*bus_callback)(bus_client* client, void* user_data, const char* name, const void* payload,
                             int32_t length);
int bus_init(void);
void bus_cleanup(void);
bus_client* bus_client_new(const char* name);
void bus_client_free(bus_client* client);
int bus_connect(bus_client* client, const char* address);
int bus_disconnect(bus_client* client);
int bus_method_call_sync(bus_client* client, const char* service, const char* method, const void* request,
                         int request_length, void* reply, int* reply_length, int timeout);
int bus_method_call_async(bus_client* client, const char* service, const char* method, const void* request,
                          int request_length, bus_callback callback, int timeout);
int bus_signal_subscribe(bus_client* client, const char* service, const char* signal, bus_callback callback);
int bus_signal_subscribe_all(bus_client* client, const char* service, bus_callback callback);
int bus_signal_unsubscribe(bus_client* client, const char* service, const char* signal);

#ifdef __cplusplus
}
#endif

#endif
