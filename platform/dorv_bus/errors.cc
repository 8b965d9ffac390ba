#include "errors.h"

#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <cerrno>
#include <cstring>

namespace dorv {
namespace {

// A connection that ended while it was being set up leaves an errno value that
// says nothing.
int ErrorFromErrno() {
  if (errno == EAGAIN || errno == EINTR || errno == EPIPE || errno == 0) {
    return -ECONNRESET;
  }
  return -errno;
}

}  // namespace

int ErrorFromMosquitto(int result) {
  switch (result) {
    case MOSQ_ERR_SUCCESS:
      return 0;
    case MOSQ_ERR_NOMEM:
      return -ENOMEM;
    case MOSQ_ERR_INVAL:
    case MOSQ_ERR_MALFORMED_UTF8:
      return -EINVAL;
    case MOSQ_ERR_NO_CONN:
      return -ENOTCONN;
    case MOSQ_ERR_PAYLOAD_SIZE:
    case MOSQ_ERR_OVERSIZE_PACKET:
      return -EMSGSIZE;
    case MOSQ_ERR_PROTOCOL:
    case MOSQ_ERR_MALFORMED_PACKET:
      return -EPROTO;
    case MOSQ_ERR_TLS:
    case MOSQ_ERR_TLS_HANDSHAKE:
    case MOSQ_ERR_AUTH:
    case MOSQ_ERR_CONN_REFUSED:
      return -EKEYREJECTED;
    case MOSQ_ERR_EAI:
    case MOSQ_ERR_LOOKUP:
      return -ENOENT;
    case MOSQ_ERR_ERRNO:
      return ErrorFromErrno();
    case MOSQ_ERR_CONN_LOST:
      return -ECONNRESET;
    case MOSQ_ERR_KEEPALIVE:
      return -ETIMEDOUT;
    default:
      return -EIO;
  }
}

int ErrorFromConnectReason(int reason) {
  switch (reason) {
    case MQTT_RC_BAD_USERNAME_OR_PASSWORD:
    case MQTT_RC_NOT_AUTHORIZED:
    case MQTT_RC_BAD_AUTHENTICATION_METHOD:
      return -EKEYREJECTED;
    case MQTT_RC_BANNED:
      return -EACCES;
    case MQTT_RC_SERVER_UNAVAILABLE:
    case MQTT_RC_SERVER_BUSY:
    case MQTT_RC_QUOTA_EXCEEDED:
    case MQTT_RC_CONNECTION_RATE_EXCEEDED:
      return -ECONNREFUSED;
    case MQTT_RC_QOS_NOT_SUPPORTED:
    case MQTT_RC_RETAIN_NOT_SUPPORTED:
      return -EOPNOTSUPP;
    default:
      return -EPROTO;
  }
}

int ErrorFromReason(int reason) {
  switch (reason) {
    case MQTT_RC_NOT_AUTHORIZED:
    case MQTT_RC_TOPIC_NAME_INVALID:
    case MQTT_RC_TOPIC_FILTER_INVALID:
      return -EACCES;
    case MQTT_RC_PACKET_TOO_LARGE:
      return -EMSGSIZE;
    case MQTT_RC_QUOTA_EXCEEDED:
    case MQTT_RC_RECEIVE_MAXIMUM_EXCEEDED:
      return -EBUSY;
    default:
      return -EPROTO;
  }
}

const char* ErrorText(int error) {
  const char* text = strerrordesc_np(-error);
  return text == nullptr ? "unknown error" : text;
}

}  // namespace dorv
