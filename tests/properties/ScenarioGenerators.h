#ifndef ZET_TESTS_SCENARIO_GENERATORS_H
#define ZET_TESTS_SCENARIO_GENERATORS_H

#include <rapidcheck.h>

#include "Scenario.h"

namespace ZET {

/// A regular file that opens, and operations of every kind.
rc::Gen<Scenario> OrdinaryScenario();

/// A text of marker lines above all, and the operations that care for them.
rc::Gen<Scenario> MarkerScenario();

/// Scraps of placeholders in text and values; the expansion may be endless.
rc::Gen<Scenario> ExpansionScenario();

/// Files of every kind in every place, and faults on the way.
rc::Gen<Scenario> TroubledScenario();

}  // namespace ZET

#endif
