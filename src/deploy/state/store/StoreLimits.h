#ifndef ZET_STORE_LIMITS_H
#define ZET_STORE_LIMITS_H

#include <cstddef>
#include <cstdint>

namespace ZET::Deploy {

/// How much the store keeps.
struct StoreLimits {
    std::size_t entries = 100;
    std::size_t entriesWithEdits = 1000;  ///< those that replaced somebody's edit
    std::uint64_t largestText = std::uint64_t{16} << 20;
    bool keepsTexts = true;

    /// Whether a text of so many bytes is kept.
    bool Keep(std::uint64_t size) const { return keepsTexts && size <= largestText; }

    /// Whether one is that somebody made: the entry that replaces it must not go as soon as it is closed.
    bool KeepEdit(std::uint64_t size) const { return Keep(size) && (entries > 0 || entriesWithEdits > 0); }
};

}  // namespace ZET::Deploy

#endif
