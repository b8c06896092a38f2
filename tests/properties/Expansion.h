#ifndef ZET_TESTS_EXPANSION_H
#define ZET_TESTS_EXPANSION_H

#include <string>

#include "zet/ZETTypes.h"

namespace ZET {

/// Whether the placeholders of every line run out: each one has its end, and no value brings itself back. An
/// engine never returns from a text for which they do not. Also false for an expansion that merely grows out
/// of proportion.
bool ExpansionEnds(const std::string& text, const StringMap& values);

}  // namespace ZET

#endif
