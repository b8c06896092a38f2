#ifndef ZET_TESTS_SCENARIO_GENERATORS_H
#define ZET_TESTS_SCENARIO_GENERATORS_H

#include <rapidcheck.h>

#include "Scenario.h"

namespace ZET {

/// A regular file that opens, and operations of every kind.
rc::Gen<Scenario> OrdinaryScenario();

/// A text mostly of marker lines, and the operations that concern them.
rc::Gen<Scenario> MarkerScenario();

/// Fragments of placeholders in text and values; the expansion may be endless.
rc::Gen<Scenario> ExpansionScenario();

/// Files of every kind at every path, and faults during the play.
rc::Gen<Scenario> TroubledScenario();

}  // namespace ZET

#endif
