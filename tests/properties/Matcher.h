#ifndef ZET_TESTS_MATCHER_H
#define ZET_TESTS_MATCHER_H

#include <string>

namespace ZET {

/// As the recording core's own match, but a pattern is compiled only once: millions of lines are matched
/// here. Throws `EZETError` for a broken pattern.
bool IsFoundQuickly(const std::string& pattern, const std::string& subject);

}  // namespace ZET

#endif
