// Compares the real engine with the plain one, on any text and any sequence of operations.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "Player.h"
#include "ScenarioBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ZET::Scenario scenario = ZET::ScenarioFromBytes(data, size);
    const std::string difference = ZET::Difference(scenario);
    if (difference.empty()) return 0;
    std::cerr << scenario << difference;
    std::abort();
}
