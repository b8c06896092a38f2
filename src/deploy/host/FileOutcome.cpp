#include "zet/deploy/FileOutcome.h"

#include <sys/stat.h>

#include <cstddef>
#include <utility>

namespace ZET::Deploy {

bool FileState::IsRegular() const {
    return exists && S_ISREG(mode);
}

void ShownDiff::Append(ShownDiff other) {
    text += other.text;
    places.insert(places.end(), other.places.begin(), other.places.end());
    if (excuse.empty()) excuse = std::move(other.excuse);
    isPrivate = isPrivate || other.isPrivate;
}

const char* NameOf(FileOutcome::Result result) {
    constexpr const char* kNames[] = {"unchanged", "created", "changed", "reserved", "restored",
                                      "forgotten", "removed", "kept",    "failed"};
    return kNames[static_cast<std::size_t>(result)];
}

}  // namespace ZET::Deploy
