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

/// What was done on the host. Only `EraseHistory` writes anything. An unknown entry number, and a file that
/// the history has never seen, is a `UsageError`; a history that cannot be used, and a text that is no longer
/// kept, is a `Failure`. `file` is any path that leads to the file.

/// A file of an entry.
struct HistoryFile {
    std::string path;  ///< of the real file
    std::string kind;  ///< "target", "edit", "template", "option", "companion", "status", "rendering",
                       ///< "original"
    FileOutcome::Result result = FileOutcome::Result::Unchanged;  ///< Unchanged, Created, Changed or Removed
    FileState before;
    FileState after;
    bool isTextKeptBefore = false;
    bool isTextKeptAfter = false;
    bool isEnded = true;       ///< false: it was not written yet
    bool isEdited = false;     ///< the text before was somebody else's work
    bool isSecret = false;     ///< its text must not be shown to everybody
    std::string templateName;  ///< set for a target; else empty
};

/// One command that wrote something.
struct HistoryEntry {
    std::int64_t number = 0;
    std::int64_t begun = 0;  ///< nanoseconds since 1970
    std::int64_t ended = 0;  ///< nanoseconds since 1970; 0 if it has not ended
    std::string outcome;     ///< "done", "failed", "cut short", "not ended"
    uid_t user = 0;
    std::string userName;
    std::string loginUser;  ///< the user who logged in originally; empty if unknown
    std::string sudoUser;   ///< the user who called sudo; empty if none
    Role role = Role::Client;
    std::vector<std::string> words;  ///< the command line without the program's name
    std::string message;             ///< the user's own message; empty if none
    std::vector<HistoryFile> files;
};

/// The change of one file by an entry, or between two entries.
struct HistoryDiff {
    HistoryFile file;
    ShownDiff diff;
    std::string trouble;  ///< why there is no diff; else empty
};

struct ErasedHistory {
    std::string path;
    std::size_t texts = 0;              ///< the number of texts removed
    std::vector<std::string> alsoHeld;  ///< other files whose history holds one of these texts
};

/// The newest entries first, at most `count`: all of them, or those that concern `file` and what belongs to
/// it.
ZET_API std::vector<HistoryEntry> ListHistory(Product& product, const std::string& file = "",
                                              std::size_t count = SIZE_MAX);

ZET_API HistoryEntry ShowEntry(Product& product, std::int64_t number);

/// The text of the file before the entry, and after it. A text that the list of targets calls secret is
/// returned only with the option `showsSecrets`.
ZET_API std::string TextBefore(Product& product, std::int64_t number, const std::string& file);
ZET_API std::string TextAfter(Product& product, std::int64_t number, const std::string& file);

/// What the entry changed or, with `to`, how the state after `to` differs from the state after `number`. For
/// all files if `file` is empty, otherwise for that one.
ZET_API std::vector<HistoryDiff> DiffHistory(Product& product, std::int64_t number,
                                             std::optional<std::int64_t> to = std::nullopt,
                                             const std::string& file = "");

/// Writes the whole history as a stream for "git fast-import". Texts that are not for everybody are left out,
/// with a note in each such file, unless the option `showsSecrets` is set. A stream that does not accept
/// everything is a `Failure`.
ZET_API void ExportHistory(Product& product, std::ostream& stream);

/// Permanently removes the texts of the file, and of what belongs to it. With the option `dryRun`, only
/// counts them.
ZET_API ErasedHistory EraseHistory(Product& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
