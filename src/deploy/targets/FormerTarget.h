#ifndef ZET_FORMER_TARGET_H
#define ZET_FORMER_TARGET_H

#include "deploy/host/FileInPlace.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/LinesPlan.h"

namespace ZET::Deploy {

/// Files that commits made from a template before, and in which the lists now ask for lines: the original
/// comes back, with the lines in it.

/// Whether the file holds what others wrote.
bool IsFormerTargetEdited(const KnownFiles& known, const FileWithLines& file);

CapturedFile OriginalWithLines(const PlannedLines& planned);

/// Replaces the file in one step, so that a killed run leaves the old or the new one. The reserve stays.
void WriteOriginalWithLines(Deployment& product, const PlannedLines& planned, const FileInPlace& place);

}  // namespace ZET::Deploy

#endif
