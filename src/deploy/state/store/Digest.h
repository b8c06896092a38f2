#ifndef ZET_STORE_DIGEST_H
#define ZET_STORE_DIGEST_H

#include <cstdint>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Sixteen bytes that tell a text from another by chance, not by intent: who has to rely on it compares the
/// texts.
std::string DigestOf(std::string_view text);

/// The same in the room of a number.
std::int64_t SealOf(std::string_view text);

}  // namespace ZET::Deploy

#endif
