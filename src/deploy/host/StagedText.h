#ifndef ZET_STAGED_TEXT_H
#define ZET_STAGED_TEXT_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "deploy/host/Staging.h"

namespace ZET::Deploy {

/// A text that a file is to get, and its mode. It is kept in memory, and becomes a file of the private
/// directory only if a check command or `diff` needs one. To write, read and remove that file of each target
/// took a seventh of the system calls of a first commit.
class StagedText {
  public:
    /// `name` is that of its file in the private directory, which must outlive the object. If there is no
    /// room in memory for the text, it is written to the file at once.
    StagedText(const Staging& staging, std::string name, std::string_view text, mode_t mode);

    /// For a file that exists already.
    explicit StagedText(const std::string& file);

    mode_t Mode() const { return m_mode; }

    /// Writes the file first, if need be. What somebody writes to it later need not be in the text.
    const std::string& File() const;

    std::string Text() const;

    /// Whether a regular file holds exactly this text: the one at `path`, or the one that `descriptor`, if
    /// not -1, is open on.
    bool IsIn(const std::string& path) const;
    bool IsIn(int descriptor, const std::string& path) const;

  private:
    const Staging* m_staging = nullptr;
    std::string m_name;
    std::string m_text;  ///< empty if it is only in the file
    bool m_isInMemory = false;
    mode_t m_mode;
    mutable std::string m_file;  ///< empty until there is one
};

}  // namespace ZET::Deploy

#endif
