/*
 * The message bus, client half: method calls to named services and signals
 * from them.
 *
 * Results: every int result is >= 0 on success and a negative errno value on
 * failure:
 *
 *   -EINVAL      a null client, buffer or callback; a null, empty or ill-formed
 *                name (see below); a negative length; an address that cannot be
 *                read
 *   -ENOTCONN    there is no connection to the broker now; nothing was sent
 *   -ESRCH       nobody serves that name; told at once; nothing was executed
 *   -ETIMEDOUT   no answer within the time-out; the service drops the request
 *                if it arrives later
 *   -EMSGSIZE    the reply is longer than the caller's buffer, or the request
 *                or the reply is longer than the broker passes on
 *   -ECONNRESET  the connection, or the service, was lost while waiting; the
 *                request may or may not have been executed
 *   -EACCES      the broker does not allow it to this client
 *   -EPROTO      the failure that a reply tells is no errno value, or the broker
 *                refused the request for a reason of its own
 *   -ENOMEM      memory ran out
 *   -ENOENT      bus_signal_unsubscribe: there is no such subscription
 *
 * bus_connect adds the reasons for which a broker cannot be reached (-ENOENT,
 * -ECONNREFUSED, -EPERM, -EHOSTUNREACH, -EKEYREJECTED ...), told at the
 * function. A service may refuse a call with a negative errno value of its own.
 *
 * Names: services, methods and signals are UTF-8 texts of 1 to 255 bytes
 * without control characters, '+' and '#', not beginning with '$'. A service
 * name holds no '/'. Any other name is -EINVAL before anything is sent.
 *
 * Time-outs are in seconds and begin with the call; 0 or less selects
 * BUS_DEFAULT_TIMEOUT, and more than 3600 counts as 3600. A call never outlives
 * its time-out, whatever the broker does.
 *
 * Threads: every function may be called from every thread at any time, also
 * from a callback. Callbacks of one client, for signals and for asynchronous
 * replies, run one after the other on one background thread of that client,
 * never on a caller's thread and never with a lock held. A callback may make
 * calls, subscribe, unsubscribe, disconnect and free its client. A callback
 * that blocks delays further callbacks only; when 65536 signals wait for it,
 * more are dropped and that is logged. The library's threads hold off every
 * signal, so signal handlers run on the application's own threads.
 *
 * Commands are executed at most once and never after their time-out: nothing
 * is sent while there is no connection, nothing is sent again, and a request
 * carries its deadline and its identity.
 *
 * Process: SIGPIPE's disposition, signal handlers, locale and standard streams
 * stay as they are. A client is of no use in a child made by fork(): its functions
 * return -ENOTCONN there and bus_client_free does nothing, so the child may end as
 * it likes. It may make clients of its own.
 */
#ifndef DORV_BUS_H
#define DORV_BUS_H

#include <stdint.h>

/* Marks what the library exports. */
#if defined(__GNUC__)
#define DORV_BUS_API __attribute__((visibility("default")))
#else
#define DORV_BUS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Seconds that a call waits when it names no time-out of its own. */
#define BUS_DEFAULT_TIMEOUT 2

/* One participant of the bus; made by bus_client_new, freed by bus_client_free. */
typedef struct bus_client bus_client;

/*
 * Receives a signal or the answer to an asynchronous call.
 *
 * client     the client that subscribed or called; stays valid until the
 *            callback returns, even when it is freed meanwhile
 * user_data  null
 * name       the signal's or method's name, valid until the callback returns
 * payload    the bytes, valid until the callback returns; null when empty
 * length     their number; for an asynchronous call that failed the negative
 *            errno value
 */
typedef void (*bus_callback)(bus_client* client, void* user_data, const char* name, const void* payload,
                             int32_t length);

/* Prepares the library; every successful bus_init is paired with a bus_cleanup. 0 or a negative errno value. */
DORV_BUS_API int bus_init(void);

/* Undoes one bus_init. Clients that still live stay usable. More calls than bus_init calls do nothing. */
DORV_BUS_API void bus_cleanup(void);

/*
 * Makes an unconnected client. `name` is shown to the broker's operator as the
 * beginning of the connection's client id; several clients may share it.
 * Null when the name is ill-formed or memory runs out. The caller frees the
 * client with bus_client_free.
 */
DORV_BUS_API bus_client* bus_client_new(const char* name);

/*
 * Ends a client: calls that other threads wait in fail with -ECONNRESET,
 * callbacks not yet begun are dropped, and the connection is closed. Waits for
 * a callback that runs on the background thread, but at most one second; such
 * a callback may finish later and may still use its client pointer. Called
 * from a callback it does not wait. Null is ignored.
 */
DORV_BUS_API void bus_client_free(bus_client* client);

/*
 * Connects to the broker and returns when calls can be made, or with the reason
 * why not, after at most BUS_DEFAULT_TIMEOUT seconds. The environment variable
 * DORV_BUS_CONNECT_TIMEOUT, or else connect_timeout in the settings file, sets
 * another time: 1 to 3600 whole seconds.
 *
 * address  "mqtt://host[:port]" (port 1883, or 8883 with TLS) or "unix:/path";
 *          null means the environment variable DORV_BUS_ADDRESS, and if that is
 *          unset or empty "unix:/run/dorv/bus.sock"
 *
 * From then on the client keeps itself connected. A failure other than -EINVAL is
 * not the end: the client goes on in the background, tries again each second
 * (each ten seconds when the broker refused it), restores its subscriptions, and
 * calls succeed as soon as the broker is there. bus_disconnect ends that. On a
 * connected client the old connection is closed first.
 *
 * -ENOENT        there is no such socket or the host name is unknown
 * -ECONNREFUSED  nobody listens there
 * -EPERM         the socket's permissions do not allow it
 * -EHOSTUNREACH, -ENETUNREACH  there is no way to the host
 * -EKEYREJECTED  the broker refused user name, password or certificate
 * -EACCES        the broker does not allow this client to connect or to
 *                receive replies
 * -EPROTO        what answers there speaks no MQTT 5
 * -EOPNOTSUPP    the broker does not offer what the bus needs (QoS 1, retained
 *                messages, wildcards, subscription identifiers); the log tells
 *                which
 * -ETIMEDOUT     no answer in time
 * -EINVAL        null client, an address or a settings file that cannot be read,
 *                or a time for connecting that is none
 */
DORV_BUS_API int bus_connect(bus_client* client, const char* address);

/*
 * Leaves the broker. Calls that other threads wait in fail with -ECONNRESET.
 * Subscriptions are remembered and restored by the next bus_connect.
 * -ENOTCONN on a client that neither is connected nor tries to be.
 */
DORV_BUS_API int bus_disconnect(bus_client* client);

/*
 * Calls a method and waits for its reply.
 *
 * request       request_length bytes; may be null when the length is 0
 * reply         receives the reply; may be null when *reply_length is 0
 * reply_length  in: the buffer's capacity in bytes; out, on success only: the
 *               reply's length. A longer reply gives -EMSGSIZE and leaves
 *               buffer and length untouched.
 */
DORV_BUS_API int bus_method_call_sync(bus_client* client, const char* service, const char* method,
                                      const void* request, int request_length, void* reply, int* reply_length,
                                      int timeout);

/*
 * Sends a request and returns. When 0 is returned, `callback` is called exactly
 * once with the reply or with the reason of the failure, unless the client is
 * freed before that. When a negative value is returned it is never called.
 */
DORV_BUS_API int bus_method_call_async(bus_client* client, const char* service, const char* method,
                                       const void* request, int request_length, bus_callback callback,
                                       int timeout);

/*
 * Has `callback` called for each signal of that name. Returns when the broker
 * has confirmed, so that a signal emitted afterwards is received; one that the
 * broker has kept from before (retained) is not. A second subscription of the same
 * name replaces the callback.
 */
DORV_BUS_API int bus_signal_subscribe(bus_client* client, const char* service, const char* signal,
                                      bus_callback callback);

/*
 * Has `callback` called for every signal of the service, also for one that has
 * a subscription of its own. Lasts until the client is freed; calling it again
 * replaces the callback.
 */
DORV_BUS_API int bus_signal_subscribe_all(bus_client* client, const char* service, bus_callback callback);

/*
 * Ends the subscription of one signal. No callback for it begins after the
 * return; one that runs already may still finish. Works without a connection.
 */
DORV_BUS_API int bus_signal_unsubscribe(bus_client* client, const char* service, const char* signal);

#ifdef __cplusplus
}
#endif

#endif
