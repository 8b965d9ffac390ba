// A header that makes every caller need protobuf.
#include <google/protobuf/stubs/port.h>
