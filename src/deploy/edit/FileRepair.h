#ifndef ZET_FILE_REPAIR_H
#define ZET_FILE_REPAIR_H

#include <string>

#include "deploy/edit/FileDiagnosis.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Repairs those damaged markers of a file for which there is only one repair. From the constructor on, no
/// other command writes the file.
class FileRepair {
  public:
    /// `file` is as the caller wrote it.
    FileRepair(Deployment& product, const std::string& file);

    const FileDiagnosis& Found() const { return m_found; }

    /// Throws a `Failure` if there is damage, and none of it can be repaired.
    FileOutcome Make(bool noBackup);

    /// Whether there is damage for which only the reader can choose the repair.
    bool IsAnyLeft() const;

  private:
    FileEdit m_edit;  // takes the lock, so it comes before anything is read
    FileDiagnosis m_found;
};

}  // namespace ZET::Deploy

#endif
