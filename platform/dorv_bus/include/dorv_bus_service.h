/*
 * The message bus, service half: serve a name, answer its method calls, emit
 * its signals. Results, names and addresses are those of dorv_bus.h.
 *
 * Threads: each service has one background thread that calls the handler for
 * one request after the other, in the order of their arrival. The handler must
 * not block for long: a request that takes time is kept and answered later from
 * any thread. bus_service_emit, bus_request_reply and bus_request_fail may be
 * called from any thread, also from the handler.
 */
#ifndef DORV_BUS_SERVICE_H
#define DORV_BUS_SERVICE_H

#include "dorv_bus.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A name that is served; made by bus_service_new, freed by bus_service_free. */
typedef struct bus_service bus_service;

/* One method call that waits for its answer; who owns it is told below. */
typedef struct bus_request bus_request;

/*
 * Receives one request and owns it: the handler, or the thread that it hands
 * the request to, ends it with exactly one bus_request_reply or bus_request_fail.
 * A request that came past its deadline, came before, or carries neither is
 * dropped without a call, and so is one whose deadline is more than an hour away.
 */
typedef void (*bus_method_handler)(bus_service* service, bus_request* request, void* user_data);

/*
 * Connects to the broker at `address` (as for bus_connect) and serves `name`
 * until bus_service_free. When it returns a service, calls reach the handler.
 * It reconnects by itself and serves again.
 *
 * result  receives the service, or null on failure
 *
 * The failures of bus_connect, -EACCES also when the broker does not let the
 * service announce itself; -EADDRINUSE when a service that answers has that
 * name already; -EINVAL also for a null handler or result. Unlike
 * bus_connect, a failure leaves nothing behind that tries again.
 */
DORV_BUS_API int bus_service_new(const char* name, const char* address, bus_method_handler handler,
                                 void* user_data, bus_service** result);

/*
 * Stops serving and closes the connection. Waits for a handler that runs; must
 * not be called from the handler (-EDEADLK, nothing happens). Requests that are
 * still kept stay valid and end without effect. Null is ignored.
 */
DORV_BUS_API int bus_service_free(bus_service* service);

/* Sends a signal to every subscriber. -ENOTCONN while there is no connection: the signal is lost. */
DORV_BUS_API int bus_service_emit(bus_service* service, const char* signal, const void* payload, int length);

/* The method's name; valid until the request ends. */
DORV_BUS_API const char* bus_request_method(const bus_request* request);

/* The request's bytes, null when there are none, and their number; valid until the request ends. */
DORV_BUS_API const void* bus_request_payload(const bus_request* request, int* length);

/*
 * The number of the client object that sent the request: random, and the same
 * for all requests of that object as long as it lives. It tells honest callers
 * apart and proves nothing, since a caller can send any number. 0 for a null
 * request.
 */
DORV_BUS_API uint64_t bus_request_caller(const bus_request* request);

/*
 * Milliseconds until the caller stops waiting for the answer, rounded up: at
 * most 3600000 when the handler receives the request. 0 or less when that time
 * is over; bus_request_reply gives -ETIMEDOUT from then on. Both go by the same
 * clock. Every request has a deadline, since the bus drops one that comes
 * without. May be called from any thread until the request ends. 0 for a null
 * request.
 */
DORV_BUS_API int bus_request_time_left(const bus_request* request);

/*
 * Answers and ends the request. -ETIMEDOUT when its deadline has passed and
 * the caller no longer waits, -EMSGSIZE when the broker does not pass on a reply of
 * that length (the caller is told), -ENOTCONN when the connection over which it
 * came is gone. -EINVAL for a null request or buffer. The request is gone in every
 * case.
 */
DORV_BUS_API int bus_request_reply(bus_request* request, const void* reply, int length);

/* Ends the request with a failure: the caller's call returns `error`, a negative errno value (else -EPROTO). */
DORV_BUS_API int bus_request_fail(bus_request* request, int error);

#ifdef __cplusplus
}
#endif

#endif
