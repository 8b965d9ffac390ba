#include "binding.h"

PYBIND11_MODULE(_vptz, module) {
  module.doc() = "Drives pan-tilt-zoom cameras through the service \"vptz\".";
  vptz_python::AddErrors(module);
  vptz_python::AddRecords(module);
  vptz_python::AddDevice(module);
  vptz_python::AddClient(module);
  module.attr("NOT_COMMANDED") = kVptzNotCommanded;
}
