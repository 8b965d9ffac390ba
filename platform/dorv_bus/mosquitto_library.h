// libmosquitto's state that the whole process shares.
#ifndef DORV_BUS_MOSQUITTO_LIBRARY_H
#define DORV_BUS_MOSQUITTO_LIBRARY_H

struct mosquitto;

namespace dorv {

// Counted use of libmosquitto's global state. 0 or a negative errno value.
int AcquireLibrary();
void ReleaseLibrary();

// mosquitto_new without its side effect: it sets SIGPIPE to ignored for the
// whole process, so what was there is put back.
mosquitto* NewMosquitto(const char* client_id, void* user_data);

}  // namespace dorv

#endif
