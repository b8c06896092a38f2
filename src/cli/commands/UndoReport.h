#ifndef ZET_UNDO_REPORT_H
#define ZET_UNDO_REPORT_H

#include "cli/Session.h"
#include "deploy/undo/Undo.h"

/// What the commands tell that go back by the history.
namespace ZET::Cli {

/// Gives the document the fields that it has even if the command fails.
void BeginUndoReport(Session& session);

/// Returns the exit status that belongs to it.
int ReportUndo(Session& session, const UndoResult& result);

}  // namespace ZET::Cli

#endif
