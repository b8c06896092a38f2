#ifndef ZET_RECORDING_CORE_MATCH_H
#define ZET_RECORDING_CORE_MATCH_H

#include <string>

namespace ZET {

/// Whether the Perl-compatible `pattern` matches anywhere in the bytes of `subject`; throws `EZETError` for
/// an invalid pattern.
bool IsFound(const std::string& pattern, const std::string& subject);

}  // namespace ZET

#endif
