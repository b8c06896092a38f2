#include "deploy/history/TextDiffer.h"

#include "deploy/host/StagedFile.h"
#include "deploy/host/UnifiedDiff.h"

namespace ZET::Deploy {

std::string TextDiffer::Diff(const std::string* older, const std::string* newer,
                             const std::string& shownPath) {
    return UnifiedDiff(Staged(older, "older"), Staged(newer, "newer"), shownPath);
}

std::string TextDiffer::Staged(const std::string* text, const char* name) const {
    constexpr mode_t kMine = 0600;
    if (text == nullptr) return "";
    std::string file = m_staging.PathOf(name);
    WriteStagedFile(file, *text, kMine);
    return file;
}

}  // namespace ZET::Deploy
