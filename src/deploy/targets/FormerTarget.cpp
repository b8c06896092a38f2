#include "deploy/targets/FormerTarget.h"

#include "deploy/host/Companions.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/state/StateWriter.h"

namespace ZET::Deploy {

bool IsFormerTargetEdited(const KnownFiles& known, const FileWithLines& file) {
    return file.before.exists && !known.IsOwnWork(file.path) &&
           !HaveSameModeAndBytes(file.path, ReserveOf(file.path));
}

CapturedFile OriginalWithLines(const PlannedLines& planned) {
    CapturedFile file{planned.file.original->state, ""};
    file.SetText(ReadFileBytes(planned.staged));
    return file;
}

void WriteOriginalWithLines(Deployment& product, const PlannedLines& planned, const FileInPlace& place) {
    FileWithCompanions now;
    now.file = Capture(planned.file.path, 0);
    FileWithCompanions wanted;
    wanted.file = OriginalWithLines(planned);
    StateWriter(product, place, planned.file.version).Bring(now, wanted);
}

}  // namespace ZET::Deploy
