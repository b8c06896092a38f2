#ifndef ZET_UNDO_REPORT_H
#define ZET_UNDO_REPORT_H

#include "cli/Session.h"
#include "deploy/undo/Undo.h"

/// The report of commands that go back in the history.
namespace ZET::Cli {

/// Reports what prevents files from being put back, and the entry that was made. Returns the resulting exit
/// status.
int ReportUndo(Session& session, const UndoResult& result);

}  // namespace ZET::Cli

#endif
