#ifndef ZET_PENDING_RECORD_H
#define ZET_PENDING_RECORD_H

#include <set>
#include <string>
#include <vector>

#include "Session.h"

namespace ZET {

/// The files that a commit is about to write, recorded in ZET_VAR_LIB_DIR/zet-ROLE.pending for as long as it
/// writes: so that the next run can tell the temporary files that a killed one left from those of others.
class PendingRecord {
  public:
    PendingRecord(Session& session, const std::vector<std::string>& paths);
    ~PendingRecord();
    PendingRecord(const PendingRecord&) = delete;
    PendingRecord& operator=(const PendingRecord&) = delete;

    /// The files of a run that did not come to its end.
    static std::set<std::string> Read(Session& session);

    /// Removes the temporary files that such a run left, and its record. Only under the lock.
    static void ClearLeftOvers(Session& session);

  private:
    std::string m_file;
};

}  // namespace ZET

#endif
