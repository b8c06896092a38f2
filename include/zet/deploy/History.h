#ifndef ZET_DEPLOY_HISTORY_H
#define ZET_DEPLOY_HISTORY_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/Product.h"
#include "zet/deploy/Role.h"

namespace ZET::Deploy {

/// Looking back at what was done on the host. Nothing is written but by `EraseHistory`. A number that is no
/// entry, and a file that the history never saw, is a `UsageError`; a history that cannot be used, and a text
/// that is not kept any more, is a `Failure`. `file` is any path that leads to the file.

/// A file of an entry.
struct HistoryFile {
    std::string path;  ///< of the real file
    std::string kind;  ///< "target", "edit", "template", "option", "companion", "status", "rendering",
                       ///< "original"
    FileOutcome::Result result = FileOutcome::Result::Unchanged;  ///< or Created, Changed, Removed
    FileState before;
    FileState after;
    bool isTextKeptBefore = false;
    bool isTextKeptAfter = false;
    bool isEdited = false;     ///< what stood there before was somebody else's work
    bool isSecret = false;     ///< its text is not for everybody
    std::string templateName;  ///< of a target; empty: it is none
};

/// One command that wrote.
struct HistoryEntry {
    std::int64_t number = 0;
    std::int64_t begun = 0;  ///< nanoseconds since 1970
    std::int64_t ended = 0;  ///< 0: it has not
    std::string outcome;     ///< "done", "failed", "cut short", "not ended"
    uid_t user = 0;
    std::string userName;
    std::string loginUser;  ///< who logged in, whatever user he became since; empty: nobody can tell
    std::string sudoUser;   ///< who asked sudo for the right; empty: nobody
    Role role = Role::Client;
    std::vector<std::string> words;  ///< of the command, without the program's name
    std::string message;             ///< the user's own; empty: none
    std::vector<HistoryFile> files;
};

/// What an entry, or all between two entries, changed in a file.
struct HistoryDiff {
    HistoryFile file;
    ShownDiff diff;
    std::string trouble;  ///< why there is none; empty: there is
};

struct ErasedHistory {
    std::string path;
    std::size_t texts = 0;              ///< taken out
    std::vector<std::string> alsoHeld;  ///< files of which the history keeps one of these texts, too
};

/// Entries from the newest to the oldest, at most `count` of them: all, or those of one file, with that file
/// and what stands beside it.
ZET_API std::vector<HistoryEntry> ListHistory(Product& product, const std::string& file = "",
                                              std::size_t count = SIZE_MAX);

ZET_API HistoryEntry ShowEntry(Product& product, std::int64_t number);

/// The text that the file had before the entry, and after it. Of what the list of targets calls secret only
/// with the option `showsSecrets`.
ZET_API std::string TextBefore(Product& product, std::int64_t number, const std::string& file);
ZET_API std::string TextAfter(Product& product, std::int64_t number, const std::string& file);

/// What the entry changed, or, with `to`, what is different after that one from what was after the first; of
/// one file, unless `file` is empty.
ZET_API std::vector<HistoryDiff> DiffHistory(Product& product, std::int64_t number,
                                             std::optional<std::int64_t> to = std::nullopt,
                                             const std::string& file = "");

/// All of it as a stream for "git fast-import". What is not for everybody is left out unless the option
/// `showsSecrets` is set; each such file says so. A stream that does not take it all is a `Failure`.
ZET_API void ExportHistory(Product& product, std::ostream& stream);

/// Takes the texts of the file, and of what stands beside it, out for good. With the option `dryRun`, tells
/// how many there are.
ZET_API ErasedHistory EraseHistory(Product& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
