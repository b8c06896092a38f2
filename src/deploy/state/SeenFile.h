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

/// A file as a plan finds it: looked at once, and read at most once, whatever is asked of it. Whoever writes
/// it later compares its version.
class SeenFile {
  public:
    /// Does not follow a link. That the file does not exist is a state, too.
    explicit SeenFile(const std::string& path);

    /// The same with a status that was read before.
    SeenFile(std::string path, const std::optional<struct stat>& status);

    const std::string& Path() const { return m_path; }
    const FileState& State() const { return m_state; }
    const FileVersion& Version() const { return m_version; }

    /// Whether this regular file holds these bytes and no more.
    bool HasBytes(std::string_view bytes) const;

    /// Whether it has the recorded text and mode; a link has not.
    bool IsAs(const RecordedState& recorded) const;

    /// All of this regular file that is recorded; none if its text is not held.
    std::optional<CapturedFile> Captured(std::uint64_t longest) const;

  private:
    const std::optional<std::string>& Text() const;

    std::string m_path;
    FileState m_state;
    FileVersion m_version;
    mutable Descriptor m_opened;
    mutable std::optional<std::string> m_text;  ///< none for a large one, which is not to be in memory twice
};

}  // namespace ZET::Deploy

#endif
