#ifndef ZET_DEPLOY_STATUS_H
#define ZET_DEPLOY_STATUS_H

#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// What is recorded of the role.
struct RoleStatus {
    std::string commitTime;            ///< RFC 3339, UTC; empty if never committed
    std::string fileServer;            ///< of a client; empty if none is recorded
    bool isCommitTimeUnknown = false;  ///< empty because a commit is writing it, or was killed before that
    bool isFileServerUnknown = false;  ///< likewise
};

/// A target, compared with what a commit would make of it.
struct TargetState {
    std::string templateName;
    std::string path;   ///< of the real file, links followed
    std::string state;  ///< "in sync", "pending", "edited", "missing", "not committed", "differs", "unknown"
    std::string trouble;  ///< why it is unknown, or why the diff is missing
    std::string file;     ///< as the list names it
    FileState before;     ///< if pending or edited: what it is, and what a commit would make of it
    FileState after;
    ShownDiff diff;         ///< if pending or edited, and diffs are wanted
    bool isMerged = false;  ///< it holds edits of others that a commit merged
    std::string
        reason{};  ///< "made under another root"; why it has no diff: "template refused", "no regular file"
};

/// A file that was edited in place.
struct EditState {
    std::string path;
    std::string state;  ///< "in place"; "changed" by somebody else since; "gone" (its blocks); "missing"
};

/// A line that the lists ask for.
struct ListedEditState {
    std::string name;      ///< of its entry; empty if it has none
    std::string path;      ///< of the real file, links followed
    std::string selector;  ///< its parameter or pattern
    std::string state;     ///< as that of a target
    std::string list;      ///< the list with its entry; empty if no list asks for it any more
    int line = 0;          ///< of the entry
    ShownDiff diff{};  ///< set for the last line of a file if diffs are wanted: what a commit would change
    std::string trouble{};  ///< why it is unknown, or why the diff is missing
};

/// A file that was committed and is no longer in force.
struct LeftOver {
    /// Whether the next commit takes it back or leaves it, and why.
    enum class Fate { GoesBack, StaysEdited, StaysWithoutReserve, StaysOutOfReach };

    std::string path;
    Fate fate = Fate::GoesBack;
    std::string templateName{};
};

struct ZET_API TargetStates {
    std::vector<TargetState> targets;
    std::vector<LeftOver> leftOvers;
    std::vector<EditState> edits;  ///< single lines in files that are no targets
    std::vector<ListedEditState> listedEdits;
    std::vector<std::string> newerTemplates;  ///< those whose shipped text or mode is not the one that the
                                              ///< working copy was made from

    /// Whether the history could be read. If not, `edits`, and whatever the lists no longer have, are missing
    /// here.
    bool isHistoryRead = true;

    bool IsAnyUnknown() const;
    bool IsInSync() const;
};

struct Status {
    RoleStatus role;
    TargetStates targets;
};

/// A target whose state cannot be determined is "unknown" and does not affect the others. Nothing is written.
ZET_API Status StatusOf(Product& product);

}  // namespace ZET::Deploy

#endif
