#include "vptz_client/exchange.h"
#include "vptz_client/method_names.h"

namespace method = vptz::method;
using vptz::Exchange;

int VptzClient::GetStatus(int timeout) { return Exchange(*this, method::kGetStatus, timeout); }
