#ifndef ZET_EDIT_ROLLBACK_H
#define ZET_EDIT_ROLLBACK_H

#include <string>

#include "deploy/state/KnownFiles.h"
#include "deploy/targets/WrittenFile.h"

namespace ZET::Deploy {

/// How an edit in place is taken back.
struct EditToTakeBack {
    enum class Way {
        Reserve,  ///< nobody else has a hand in the file, or it is gone: it goes back as a target does
        Blocks,   ///< the product's blocks go, and all other lines stay
        Forget,   ///< nothing of the product's is left in it
        Keep      ///< nobody can tell what the product's is
    };

    Way way = Way::Forget;
    std::string remark;
    std::string text;  ///< what is left without the blocks
};

/// Damaged markers, and what cannot be read, are a `Failure`.
EditToTakeBack LookAtEdit(const KnownFiles& known, const WrittenFile& file, bool isForced);

}  // namespace ZET::Deploy

#endif
