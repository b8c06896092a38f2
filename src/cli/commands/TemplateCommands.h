#ifndef ZET_TEMPLATE_COMMANDS_H
#define ZET_TEMPLATE_COMMANDS_H

#include "cli/CommandLine.h"

/// The parts of the command family "template".
namespace ZET::Cli {

/// "list", "status", "diff".
void AddTemplateStates(CommandFamily& family);

/// "upgrade".
void AddTemplateUpgrade(CommandFamily& family);

}  // namespace ZET::Cli

#endif
