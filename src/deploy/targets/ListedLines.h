#ifndef ZET_LISTED_LINES_H
#define ZET_LISTED_LINES_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Staging.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/RememberedLines.h"
#include "text/LineEnds.h"
#include "text/ParamLook.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A line that the lists ask for in a file.
struct LineToSet {
    ListedEdit edit;      ///< a copy: the lists may be read again before the line is set
    std::string pattern;  ///< selects the lines that it replaces
    std::string line;     ///< with placeholders replaced, and with the end that the file's lines have
    bool stays = false;   ///< it stays as somebody changed it
    std::string doubt{};  ///< why it would be refused if it were not set already
};

/// How an edit selects its line, as the history remembers it.
std::string SelectorOf(const ListedEdit& edit);

/// A file that is nobody's target, with the lines that the lists ask for.
struct FileWithLines {
    std::string named;  ///< as the lists have it; empty: they ask for none any more
    std::string path;   ///< of the real file, links followed
    std::vector<LineToSet> lines;
    std::vector<RememberedLine> remembered;  ///< of both roles
    bool isThere = false;
    bool isForgotten = false;  ///< it has a reserve, and no history knows it
    bool isUntold = false;     ///< nobody can tell what was set in it: the history cannot be read
    FileVersion version;
    FileState before;
    std::optional<CapturedFile> original{};  ///< of a former target: what was there before
    std::string text;                        ///< where lines are set: the file's text, or the original's
    Text::LineEnds ends{};                   ///< of that text
    std::string trouble{};  ///< why a file that the lists do not ask for any more cannot be looked at

    /// Whether a commit of either role has set a line for the selector.
    bool Remembers(const std::string& selector) const;

    /// Whether a commit of this role has.
    bool IsCommittedBy(Role role, const std::string& selector) const;

    /// Whether a commit has set this line for the selector.
    bool HasSet(const std::string& selector, const std::string& line) const;
};

/// An edit of the lists that cannot be made, and why.
struct UnsetEdit {
    const ListedEdit* edit = nullptr;
    Problem why;
};

/// The lines that the lists have in force for the host's role, file by file, and the files in which the role
/// has set some. What keeps a line from being set is a problem at the place of its entry.
struct ListedLines {
    std::vector<FileWithLines> files;
    std::vector<Problem> problems;
    std::vector<UnsetEdit> unset;
};

/// What the file has of a parameter, where lines are set.
Text::ParamLook LookOf(const FileWithLines& file, const std::string& param);

ListedLines FindListedLines(Deployment& product, const KnownFiles& known, const Staging& staging);

}  // namespace ZET::Deploy

#endif
