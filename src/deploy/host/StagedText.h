#ifndef ZET_STAGED_TEXT_H
#define ZET_STAGED_TEXT_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "deploy/host/Staging.h"

namespace ZET::Deploy {

/// A text that a file is to get, and its mode: kept in memory, and a file of the private directory for
/// whoever needs one, a check command or `diff`. To write, read and remove that file of each target took a
/// seventh of the system calls of a first commit.
class StagedText {
  public:
    /// The file would be called `name` in the private directory, which must live as long as the object. A
    /// text for which there is no room in memory becomes one at once.
    StagedText(const Staging& staging, std::string name, std::string_view text, mode_t mode);

    /// Of a file that is there already.
    explicit StagedText(const std::string& file);

    mode_t Mode() const { return m_mode; }

    /// What can be written to it is not in the text any more.
    const std::string& File() const;

    std::string Text() const;

    /// Whether a regular file holds the text and no more: by its path, or the one that is open.
    bool IsIn(const std::string& path) const;
    bool IsIn(int descriptor, const std::string& path) const;

  private:
    const Staging* m_staging = nullptr;
    std::string m_name;
    std::string m_text;  ///< in memory; empty where it is only in the file
    bool m_isInMemory = false;
    mode_t m_mode;
    mutable std::string m_file;  ///< empty as long as there is none
};

}  // namespace ZET::Deploy

#endif
