#ifndef ZET_TESTS_OPERATION_GENERATORS_H
#define ZET_TESTS_OPERATION_GENERATORS_H

#include <rapidcheck.h>

#include <vector>

#include "Scenario.h"

namespace ZET {

/// Of every kind, with patterns that hit, miss and are broken.
rc::Gen<Operation> AnyOperation();

/// Those that care for markers.
rc::Gen<Operation> MarkerOperation();

/// Up to eight, the last one a save.
rc::Gen<std::vector<Operation>> OperationsOf(const rc::Gen<Operation>& operation);

}  // namespace ZET

#endif
