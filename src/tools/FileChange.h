#ifndef ZET_FILE_CHANGE_H
#define ZET_FILE_CHANGE_H

#include <functional>
#include <string>

#include "Session.h"
#include "Writing.h"

namespace ZET {

/// The one way in which a command edits a file in place: tried on a copy first, kept before it is touched,
/// compared with the trial afterwards, and reported. An edit that changes nothing leaves the file untouched.
class FileChange {
  public:
    /// Edits the file at `path` through the module. Called for the copy and then for the file.
    using Operation = std::function<void(const std::string& path, bool noBackup)>;

    /// Throws what is wrong with the result of the trial.
    using Inspection = std::function<void(const std::string& staged)>;

    /// `file` is what the caller wrote. A `Failure` when it is no regular file that can be edited.
    FileChange(Session& session, const std::string& file);

    /// The real file, links followed.
    const std::string& Path() const { return m_path; }

    /// Each of the two ends the command, and returns its exit status.
    int LeaveUnchanged(const std::string& remark = "");
    int Make(const Operation& operation, bool noBackup, const Inspection& inspection = nullptr);

  private:
    void Try(const Operation& operation, const std::string& staged);
    void Apply(const Operation& operation, bool noBackup, const std::string& staged);
    void Perform(const Operation& operation, const std::string& path, bool noBackup);

    Session& m_session;
    std::string m_file;
    std::string m_path;
    Writing m_writing;
};

}  // namespace ZET

#endif
