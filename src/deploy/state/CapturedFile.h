#ifndef ZET_CAPTURED_FILE_H
#define ZET_CAPTURED_FILE_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "deploy/state/store/Records.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

class Host;

/// A file as it was at an instant, as far as it can be put back: its text, and what it carries besides.
struct CapturedFile {
    RecordedState state;
    std::string text;  ///< empty where it is longer than was asked for

    bool IsAs(const RecordedState& other) const { return IsSameFile(state, other); }

    /// The same file with another text.
    void SetText(const std::string& other);
};

/// Of an open file: the ACL, the label and the user's own attributes.
std::map<std::string, std::string> AttributesOf(int descriptor, const std::string& path);

/// The file of that name in a directory that is held; `path` is for messages. A text that is longer than
/// `longest` is read, but not held. What is there, but no regular file, is a `Failure`.
CapturedFile CaptureIn(int directory, const std::string& name, const std::string& path,
                       std::uint64_t longest);

/// The same by its path; with a host, `longest` is what its history keeps.
CapturedFile Capture(const std::string& path, std::uint64_t longest);
CapturedFile Capture(Host& host, const std::string& path);

/// A regular file with that text, which is held up to `longest`, and these rights; it carries no attributes.
CapturedFile CapturedOf(const FileState& rights, const std::string& text, std::uint64_t longest);

/// A file that cannot be captured. No file could have its text, so that no way leads back to it.
CapturedFile CapturedWithoutText(const FileState& now);

/// Whether the file has the text that is recorded, whatever else it carries.
bool HasRecordedText(const std::string& path, const RecordedState& state);

/// Whether the text is the one that is recorded.
bool IsRecordedText(std::string_view text, const RecordedState& state);

/// The same as `Capture` but for the text, which is not read: `exists`, mode, owner and attributes only.
RecordedState CaptureWithoutText(const std::string& path);

/// The same of a name in a directory that is held; `path` is for the message.
RecordedState CaptureWithoutTextIn(int directory, const std::string& name, const std::string& path);

/// What is told of a recorded state: that of a regular file of one name, or that there was none.
FileState StateOfRecorded(const RecordedState& recorded);

}  // namespace ZET::Deploy

#endif
