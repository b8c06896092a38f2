#ifndef ZET_FILE_EDIT_H
#define ZET_FILE_EDIT_H

#include <functional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// An edit of one file in place. Its result is judged, the original kept, and only then the file replaced. A
/// dry run edits a copy. An edit that changes nothing leaves the file untouched.
class FileEdit {
  public:
    /// Edits the file `path` through the module, without a reserve: `FileEdit` keeps it.
    using Operation = std::function<void(const std::string& path)>;

    /// Throws if something is wrong with what the edit made.
    using Inspection = std::function<void(const std::string& made)>;

    /// `file` is as the caller wrote it. Throws a `Failure` unless it is a regular file that can be edited.
    FileEdit(Deployment& product, const std::string& file,
             FileInPlace::Access access = FileInPlace::Access::FromWithinItsDirectory);

    /// The real file, links followed.
    const std::string& Path() const { return m_path; }

    /// The one name of the file, as the lists know it.
    const std::string& Name() const { return m_place.RealPath(); }

    FileOutcome LeaveUnchanged(const std::string& remark = "") const;
    FileOutcome Make(const Operation& operation, bool noBackup, const Inspection& inspection = nullptr);

  private:
    void Judge(const std::string& made, bool noBackup, const Inspection& inspection, FileOutcome& outcome);
    void Try(const Operation& operation, const Replacement::Judge& judge);
    void Apply(const Operation& operation, bool noBackup, const Replacement::Judge& judge);
    ExpectedFile Expected(bool noBackup) const;
    void LeaveOthersWork(ExpectedFile& file) const;
    void Perform(const Operation& operation, const std::string& path);

    Deployment& m_product;
    FileKind m_kind;
    std::string m_file;
    std::string m_path;
    Writing m_writing;
    FileInPlace m_place;
    FileVersion m_version;  ///< taken before anything of the file is read
};

}  // namespace ZET::Deploy

#endif
