#ifndef ZET_FORMER_TARGET_H
#define ZET_FORMER_TARGET_H

#include "deploy/host/FileInPlace.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/ListedEdits.h"

namespace ZET::Deploy {

/// A file in which the lists ask for lines, and that commits made from a template before: what was there
/// before comes back, with the lines in it.

/// Whether it holds what others wrote.
bool IsFormerTargetEdited(const KnownFiles& known, const FileWithLines& file);

CapturedFile OriginalWithLines(const PlannedEdits& planned);

/// At once, so that a killed run leaves the one or the other. The reserve stays.
void WriteOriginalWithLines(Deployment& product, const PlannedEdits& planned, const FileInPlace& place);

}  // namespace ZET::Deploy

#endif
