#ifndef ZET_FILE_REPAIR_H
#define ZET_FILE_REPAIR_H

#include <string>

#include "deploy/edit/FileDiagnosis.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Repairs what is certain among a file's damaged markers. From the constructor on, no other command writes
/// it.
class FileRepair {
  public:
    /// `file` is as the caller wrote it.
    FileRepair(Deployment& product, const std::string& file);

    const FileDiagnosis& Found() const { return m_found; }

    /// A `Failure` when there is damage, and nothing of it is certain.
    FileOutcome Make(bool noBackup);

    /// Whether there is damage that stays, since only the reader can choose.
    bool IsAnyLeft() const;

  private:
    FileEdit m_edit;  // before anything is read
    FileDiagnosis m_found;
};

}  // namespace ZET::Deploy

#endif
