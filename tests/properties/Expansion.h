#ifndef ZET_TESTS_EXPANSION_H
#define ZET_TESTS_EXPANSION_H

#include <string>

#include "zet/ZETTypes.h"

namespace ZET {

/// Whether the expansion of every line ends: each placeholder is closed, and no value reproduces itself. An
/// engine never returns from any other text. Also false for an expansion that merely grows out of proportion.
bool ExpansionEnds(const std::string& text, const StringMap& values);

}  // namespace ZET

#endif
