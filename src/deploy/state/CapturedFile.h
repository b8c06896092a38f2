#ifndef ZET_CAPTURED_FILE_H
#define ZET_CAPTURED_FILE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "deploy/state/store/Records.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

class FileInPlace;
class Host;

/// A file at one instant, as far as it can be put back: its text, and what else it carries.
struct CapturedFile {
    RecordedState state;
    std::string text;  ///< empty if longer than the caller asked for

    bool IsAs(const RecordedState& other) const { return IsSameFile(state, other); }

    /// Gives the file another text, and leaves the rest as it is.
    void SetText(const std::string& other);
};

/// The ACL, the label and the user's own attributes of an open file.
std::map<std::string, std::string> AttributesOf(int descriptor, const std::string& path);

/// Captures the file. A text longer than `longest` is read, but not held; with a host, `longest` is the size
/// up to which its history keeps texts. Throws a `Failure` if something other than a regular file is there.
CapturedFile Capture(const std::string& path, std::uint64_t longest);
CapturedFile Capture(Host& host, const std::string& path);

/// The same for a file that is held or, with a suffix, for what stands beside it.
CapturedFile CaptureIn(const FileInPlace& place, const std::string& suffix, std::uint64_t longest);

/// A regular file with these rights and this text, held up to `longest` bytes; it has no attributes.
CapturedFile CapturedOf(const FileState& rights, const std::string& text, std::uint64_t longest);

/// For a file that cannot be captured: its text is recorded as one that no file has, so nothing can restore
/// it.
CapturedFile CapturedWithoutText(const FileState& now);

/// Whether the file has the recorded text, whatever else it carries.
bool HasRecordedText(const std::string& path, const RecordedState& state);

/// Whether the text is the recorded one.
bool IsRecordedText(std::string_view text, const RecordedState& state);

/// The same as `Capture`, but does not read the text: `exists`, mode, owner, size and attributes only.
RecordedState CaptureWithoutText(const std::string& path);

/// The same for a file that is held or, with a suffix, for what stands beside it.
RecordedState CaptureWithoutTextIn(const FileInPlace& place, const std::string& suffix);

/// The recorded state in terms for the user: that of a regular file with one name, or of no file.
FileState StateOfRecorded(const RecordedState& recorded);

}  // namespace ZET::Deploy

#endif
