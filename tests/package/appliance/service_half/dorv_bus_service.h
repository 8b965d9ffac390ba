/* What vptzd needs of the service half of an appliance's bus, and no more. */
#ifndef DORV_BUS_SERVICE_H
#define DORV_BUS_SERVICE_H

#include "dorv_bus.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct bus_service bus_service;
typedef struct bus_request bus_request;
typedef void (*bus_method_handler)(bus_service* service, bus_request* request, void* user_data);
int bus_service_new(const char* name, const char* address, bus_method_handler handler, void* user_data,
                    bus_service** result);
int bus_service_free(bus_service* service);
int bus_service_emit(bus_service* service, const char* signal, const void* payload, int length);
const char* bus_request_method(const bus_request* request);
const void* bus_request_payload(const bus_request* request, int* length);
uint64_t bus_request_caller(const bus_request* request);
int bus_request_time_left(const bus_request* request);
int bus_request_reply(bus_request* request, const void* reply, int length);
int bus_request_fail(bus_request* request, int error);

#ifdef __cplusplus
}
#endif

#endif
