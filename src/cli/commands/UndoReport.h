#ifndef ZET_UNDO_REPORT_H
#define ZET_UNDO_REPORT_H

#include "cli/Session.h"
#include "deploy/undo/Undo.h"

/// What the commands tell that go back by the history.
namespace ZET::Cli {

/// What keeps files from going back, and the entry that was made. Returns the exit status that belongs to it.
int ReportUndo(Session& session, const UndoResult& result);

}  // namespace ZET::Cli

#endif
