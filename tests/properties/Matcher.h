#ifndef ZET_TESTS_MATCHER_H
#define ZET_TESTS_MATCHER_H

#include <string>

namespace ZET {

/// As the recording core's own match, but compiles a pattern only once, since millions of lines are matched
/// here. Throws `EZETError` for an invalid pattern.
bool IsFoundQuickly(const std::string& pattern, const std::string& subject);

}  // namespace ZET

#endif
