// The bus's error codes, and what libmosquitto and the broker say translated
// into them.
#ifndef DORV_BUS_ERRORS_H
#define DORV_BUS_ERRORS_H

namespace dorv {

// From a result of libmosquitto, with errno as the call left it.
int ErrorFromMosquitto(int result);

// From the reason with which the broker refuses a connection (a CONNACK).
int ErrorFromConnectReason(int reason);

// From the reason with which it refuses a message or a subscription.
int ErrorFromReason(int reason);

// For log lines; valid for ever.
const char* ErrorText(int error);

}  // namespace dorv

#endif
