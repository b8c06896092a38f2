#ifndef ZET_EDIT_ROLLBACK_H
#define ZET_EDIT_ROLLBACK_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/state/KnownFiles.h"
#include "deploy/targets/EditedBlocks.h"
#include "deploy/targets/ListedLines.h"
#include "deploy/targets/WrittenFile.h"

namespace ZET::Deploy {

/// How an edit in place is taken back.
struct EditToTakeBack {
    enum class Way {
        Reserve,           ///< it goes back as a target does: nobody else changed it, or it is gone
        Blocks,            ///< the product's blocks go, and all other lines stay
        Forget,            ///< nothing of the product's is left in it
        Keep,              ///< nobody can tell which part is the product's
        KeepEdited,        ///< somebody's work would go with a block
        LeaveIrregular,    ///< it is no regular file any more
        LeaveToOtherRole,  ///< only the other role has set lines there
        HandOver           ///< the other role's lines stay, and nothing of this role's is left
    };

    Way way = Way::Forget;
    std::string remark{};
    std::string text{};                        ///< what is left without the blocks
    bool hasBlocks = false;                    ///< before that
    std::vector<RememberedLine> others{};      ///< lines that the other role has set there, and that stay
    bool isUnmarked = false;                   ///< what was edited without markers, or lost them, stays, too
    std::optional<EditedBlock> editedBlock{};  ///< set where somebody's work would go with a block
};

/// Throws a `Failure` for damaged markers, and for what cannot be read.
EditToTakeBack LookAtEdit(Deployment& product, const KnownFiles& knownFiles, const WrittenFile& file,
                          bool isForced);

/// What is reported of a file that has no reserve to go back to, and may itself be gone.
std::string WordsOfNoReserve(Host& host, const WrittenFile& file);

/// What is reported of a file that is kept, of one that is kept for a block that somebody changed, with the
/// line, and of one that only loses its blocks. `force` names what puts the file back, or forgets it.
std::string WordsOfKept(const WrittenFile& file, const std::string& force);
std::string WordsOfEditedBlock(const WrittenFile& file, const EditToTakeBack& edit, const std::string& force);
std::string WordsOfUnmarked(const WrittenFile& file, const EditToTakeBack& edit, bool isDryRun,
                            const std::string& force);

}  // namespace ZET::Deploy

#endif
