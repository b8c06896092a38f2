#ifndef ZET_TEMPLATE_COMMANDS_H
#define ZET_TEMPLATE_COMMANDS_H

#include <vector>

#include "cli/CommandLine.h"
#include "cli/Session.h"
#include "zet/ZETProblem.h"

/// The parts of the family "template".
namespace ZET::Cli {

/// "list", "status", "diff".
void AddTemplateStates(CommandFamily& family);

/// "upgrade".
void AddTemplateUpgrade(CommandFamily& family);

/// False when there are none.
bool TellProblems(Session& session, const std::vector<Problem>& problems);

/// Each file is told.
void TellFile(Session& session, const FileOutcome& outcome);

}  // namespace ZET::Cli

#endif
