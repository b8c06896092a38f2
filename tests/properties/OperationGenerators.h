#ifndef ZET_TESTS_OPERATION_GENERATORS_H
#define ZET_TESTS_OPERATION_GENERATORS_H

#include <rapidcheck.h>

#include <vector>

#include "Scenario.h"

namespace ZET {

/// Operations of every kind, with patterns that match, do not match, or are invalid.
rc::Gen<Operation> AnyOperation();

/// The operations that concern markers.
rc::Gen<Operation> MarkerOperation();

/// Up to eight operations, the last one a save.
rc::Gen<std::vector<Operation>> OperationsOf(const rc::Gen<Operation>& operation);

}  // namespace ZET

#endif
