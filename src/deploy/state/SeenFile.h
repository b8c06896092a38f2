#ifndef ZET_SEEN_FILE_H
#define ZET_SEEN_FILE_H

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/store/Records.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {

/// A file as it is when a plan comes to it: looked at once, and read once at most, whatever is asked of it.
/// Whoever writes it afterwards compares its version.
class SeenFile {
  public:
    /// A link is not followed; that nothing is there is a state, too.
    explicit SeenFile(const std::string& path);

    /// The same where the look was taken before.
    SeenFile(std::string path, const std::optional<struct stat>& status);

    const std::string& Path() const { return m_path; }
    const FileState& State() const { return m_state; }
    const FileVersion& Version() const { return m_version; }

    /// Whether this regular file holds these bytes and no more.
    bool HasBytes(std::string_view bytes) const;

    /// Whether it is by content what is recorded; a link is not.
    bool IsAs(const RecordedState& recorded) const;

    /// All of this regular file that is recorded; none of one whose text is not held.
    std::optional<CapturedFile> Captured(std::uint64_t longest) const;

  private:
    const std::optional<std::string>& Text() const;

    std::string m_path;
    FileState m_state;
    FileVersion m_version;
    mutable Descriptor m_opened;
    mutable std::optional<std::string> m_text;  ///< none of a large one, of which no two are in memory
};

}  // namespace ZET::Deploy

#endif
