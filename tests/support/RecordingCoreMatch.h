#ifndef ZET_RECORDING_CORE_MATCH_H
#define ZET_RECORDING_CORE_MATCH_H

#include <string>

namespace ZET {

/// Whether the Perl-compatible `pattern` is found in the bytes of `subject`; throws `EZETError` for a broken
/// pattern.
bool IsFound(const std::string& pattern, const std::string& subject);

}  // namespace ZET

#endif
