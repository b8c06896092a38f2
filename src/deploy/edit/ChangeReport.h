#ifndef ZET_CHANGE_REPORT_H
#define ZET_CHANGE_REPORT_H

#include <string>

#include "deploy/host/Diff.h"
#include "deploy/state/Session.h"
#include "deploy/targets/ShownDiff.h"

namespace ZET {

/// What a command did to one file, or would do in a dry run.
struct FileReport {
    std::string file;    ///< as the caller wrote it
    std::string path;    ///< of the real file, links followed
    std::string change;  ///< "unchanged", "changed", "created", "reserved", "restored", "forgotten"
    FileState before;
    FileState after;
    std::string reserve;  ///< the reserve that the file then has; empty: none
    std::string remark;   ///< for the reader, after the change; empty: none
    ShownDiff diff;
};

/// Gives the document the fields that it has even if the command fails.
void BeginFileReport(Session& session);

/// One line of text and the diff; an element of the list "files" of the document, with the same fields in a
/// dry run. Returns the exit status that belongs to it.
int ReportFile(Session& session, const FileReport& report);

/// The path as the labels of a diff have it: one with ".." in it is none that `patch` accepts.
std::string ShownPath(const std::string& path);

/// The diff of a change of `path`, or of its companion `shownPath`, if one is wanted: of a text that is not
/// for everybody, only where it changes.
ShownDiff DiffToShow(Session& session, const std::string& oldFile, const std::string& newFile,
                     const std::string& path, const std::string& shownPath = "");

/// The mode and owner that a text made in `staged` has once it is the file `path`, whose owner it then has as
/// far as this user may give files away.
FileState StateInPlace(const std::string& path, const std::string& staged);

/// The reserve of a file, if it has one.
std::string ReserveOf(const std::string& path);

/// The reserve that the file has after a change that keeps one.
std::string ReserveAfterChange(const std::string& path);

}  // namespace ZET

#endif
