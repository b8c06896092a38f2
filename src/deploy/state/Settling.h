#ifndef ZET_SETTLING_H
#define ZET_SETTLING_H

#include "deploy/state/CapturedFile.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// How a command ended.
enum class Ending {
    Done,
    DoneInPart,  ///< as far as it could be; each file is looked at
    Unknown      ///< it failed, or was killed
};

/// Whether the command can have written a file. One that was killed cannot be asked, and may have.
enum class Written { Maybe, No };

/// What a command that has not ended was going to do to the file.
FileToRecord PlanOf(const RecordedFile& file);

/// Finds out by content what became of a file that was going to be written. What is neither as it was before
/// nor as it was going to be is somebody else's work. It does not tell whether the file was written before,
/// so the entry keeps what the command may have replaced.
void SettleFile(const FileToRecord& planned, const CapturedFile& now, Ending ending, Written written,
                Settlement& settlement);

/// The same for a file that cannot be looked at.
void SettleUnseen(const RecordedFile& file, Settlement& settlement);

}  // namespace ZET::Deploy

#endif
