#ifndef ZET_EDIT_ROLLBACK_H
#define ZET_EDIT_ROLLBACK_H

#include <string>
#include <vector>

#include "deploy/state/KnownFiles.h"
#include "deploy/targets/ListedLines.h"
#include "deploy/targets/WrittenFile.h"

namespace ZET::Deploy {

/// How an edit in place is taken back.
struct EditToTakeBack {
    enum class Way {
        Reserve,         ///< nobody else has a hand in the file, or it is gone: it goes back as a target does
        Blocks,          ///< the product's blocks go, and all other lines stay
        Forget,          ///< nothing of the product's is left in it
        Keep,            ///< nobody can tell what the product's is
        LeaveIrregular,  ///< it holds no text any more
        LeaveToOtherRole,  ///< which alone has set lines there
        HandOver           ///< the other role's lines stay, and nothing of this role's is left
    };

    Way way = Way::Forget;
    std::string remark{};
    std::string text{};                    ///< what is left without the blocks
    std::vector<RememberedLine> others{};  ///< lines that the other role has set there, and that stay
    bool isUnmarked = false;               ///< what was edited without markers is left, too
};

/// Damaged markers, and what cannot be read, are a `Failure`.
EditToTakeBack LookAtEdit(Deployment& product, const KnownFiles& knownFiles, const WrittenFile& file,
                          bool isForced);

/// What is told of a file that has no reserve to go back to, and may be gone itself.
std::string WordsOfNoReserve(Host& host, const WrittenFile& file);

/// What is told of a file that is kept, and of one that loses its blocks alone. `force` puts it back, or
/// forgets it.
std::string WordsOfKept(const WrittenFile& file, const std::string& force);
std::string WordsOfUnmarked(const WrittenFile& file, bool isDryRun, const std::string& force);

}  // namespace ZET::Deploy

#endif
