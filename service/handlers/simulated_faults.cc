#include <cstddef>

#include "drivers/simulated/fault_list.h"
#include "handlers/answers.h"
#include "handlers/handlers.h"

namespace vptzd {
namespace {

std::size_t LastNumber(Fleet& fleet) {
  const auto lock = fleet.Enter();
  return fleet.size() == 0 ? 0 : fleet.members().back()->number;
}

}  // namespace

tutorial::VptzResponse SimulateFaults(Fleet& fleet, const std::string& text) {
  tutorial::VptzResponse response = Answer(Status::kDone);
  if (!fleet.simulated()) {
    response = Answer(Status::kUnknownMethod);
    response.set_nat_address("there is no simulated camera: vptzd runs with neither --cameras nor --fleet");
    return response;
  }
  try {
    // A long text is read before the fleet is entered: calls are answered meanwhile.
    auto faults = ReadFaultSwitch(text, LastNumber(fleet));
    const auto lock = fleet.Enter();
    if (faults) fleet.SetFaults(*std::move(faults));
    response.set_nat_address(TextOf(fleet.faults()));
  } catch (const DocumentError& error) {
    response = Answer(Status::kBadRequest);
    response.set_nat_address(std::to_string(error.line()) + ": " + error.what());
  }
  return response;
}

}  // namespace vptzd
