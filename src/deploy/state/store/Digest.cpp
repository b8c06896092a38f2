#include "deploy/state/store/Digest.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstring>

namespace ZET::Deploy {

namespace {

std::string BytesOf(XXH128_hash_t hash) {
    XXH128_canonical_t bytes;
    XXH128_canonicalFromHash(&bytes, hash);
    return std::string(reinterpret_cast<const char*>(bytes.digest), sizeof bytes.digest);
}

}  // namespace

std::string DigestOf(std::string_view text) {
    return BytesOf(XXH3_128bits(text.data(), text.size()));
}

struct DigestInProgress::State {
    XXH3_state_t hash;
};

DigestInProgress::DigestInProgress() : m_state(std::make_unique<State>()) {
    XXH3_128bits_reset(&m_state->hash);
}

DigestInProgress::~DigestInProgress() = default;

void DigestInProgress::Add(std::string_view bytes) {
    XXH3_128bits_update(&m_state->hash, bytes.data(), bytes.size());
}

std::string DigestInProgress::Bytes() const {
    return BytesOf(XXH3_128bits_digest(&m_state->hash));
}

std::int64_t SealOf(std::string_view text) {
    const XXH64_hash_t hash = XXH3_64bits(text.data(), text.size());
    std::int64_t seal = 0;
    std::memcpy(&seal, &hash, sizeof seal);
    return seal;
}

}  // namespace ZET::Deploy
