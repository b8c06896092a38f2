#ifndef ZET_FUZZ_SCENARIO_BYTES_H
#define ZET_FUZZ_SCENARIO_BYTES_H

#include <cstddef>
#include <cstdint>

#include "Scenario.h"

namespace ZET {

/// Makes a scenario from any bytes. Three bytes determine how the file is opened and what follows; then come
/// the operations and the values, each text ended by the byte 255; the rest is the text of the file. Missing
/// bytes at the end count as zeros.
Scenario ScenarioFromBytes(const std::uint8_t* data, std::size_t size);

}  // namespace ZET

#endif
