#ifndef ZET_PENDING_RECORD_H
#define ZET_PENDING_RECORD_H

#include <set>
#include <string>
#include <vector>

#include "deploy/state/HostProduct.h"

namespace ZET::Deploy {

/// The files that a command is about to write, recorded in ZET_VAR_LIB_DIR/zet.pending for as long as it
/// writes: so that the next run can tell the temporary files that a killed one left from those of others.
/// Only under the lock; one record serves both roles, as the lock does.
class PendingRecord {
  public:
    PendingRecord(HostProduct& product, const std::vector<std::string>& paths);
    ~PendingRecord();
    PendingRecord(const PendingRecord&) = delete;
    PendingRecord& operator=(const PendingRecord&) = delete;

    static std::string FileOf(HostProduct& product);

    /// The files of a run that did not come to its end.
    static std::set<std::string> Read(HostProduct& product);

    /// Removes the temporary files that such a run left, and its record; what has the name of one, but cannot
    /// be its work, is told and stays. Only under the lock. Returns the run's files.
    static std::set<std::string> ClearLeftOvers(HostProduct& product);

    /// The same, and the directories that killed runs made for files on their way, wherever these may be.
    static std::set<std::string> ClearAllLeftOvers(HostProduct& product);

  private:
    std::string m_file;
};

}  // namespace ZET::Deploy

#endif
