#include "deploy/state/store/Digest.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>

namespace ZET::Deploy {

std::string DigestOf(std::string_view text) {
    XXH128_canonical_t bytes;
    XXH128_canonicalFromHash(&bytes, XXH3_128bits(text.data(), text.size()));
    return std::string(reinterpret_cast<const char*>(bytes.digest), sizeof bytes.digest);
}

std::int64_t SealOf(std::string_view text) {
    const XXH64_hash_t hash = XXH3_64bits(text.data(), text.size());
    std::int64_t seal = 0;
    std::memcpy(&seal, &hash, sizeof seal);
    return seal;
}

}  // namespace ZET::Deploy
