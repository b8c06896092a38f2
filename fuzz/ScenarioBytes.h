#ifndef ZET_FUZZ_SCENARIO_BYTES_H
#define ZET_FUZZ_SCENARIO_BYTES_H

#include <cstddef>
#include <cstdint>

#include "Scenario.h"

namespace ZET {

/// Makes a scenario of any bytes. Three bytes say how the file is opened and what is to come, then follow the
/// operations and the values, their texts each ended by the byte 255; the rest is the text of the file. What
/// is missing at the end counts as zeros.
Scenario ScenarioFromBytes(const std::uint8_t* data, std::size_t size);

}  // namespace ZET

#endif
