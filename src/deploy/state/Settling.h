#ifndef ZET_SETTLING_H
#define ZET_SETTLING_H

#include "deploy/state/CapturedFile.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// How a command ended.
enum class Ending {
    Done,
    DoneInPart,  ///< what could be done; each file is looked at
    Unknown      ///< it failed, or was killed
};

/// What a command that has not ended was going to do to a file.
FileToRecord PlanOf(const RecordedFile& file);

/// Tells by content how a file turned out that was going to be written. What is neither as it was before nor
/// as it was going to be is somebody else's work.
void SettleFile(const FileToRecord& planned, const CapturedFile& now, Ending ending, Settlement& settlement);

}  // namespace ZET::Deploy

#endif
