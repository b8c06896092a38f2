#ifndef ZET_COMMANDS_H
#define ZET_COMMANDS_H

#include "deploy/state/Session.h"

/// The commands. Each does its work, reports it, and returns the exit status; what it cannot do it throws.
namespace ZET {

int RunCommitConfig(Session& session);
int RunCheckConfig(Session& session);
int RunRollbackConfig(Session& session);
int RunStatus(Session& session);
int RunValues(Session& session);
int RunTemplateInstall(Session& session);
int RunTemplateProcess(Session& session);
int RunParamGet(Session& session);
int RunParamSet(Session& session);
int RunParamRestore(Session& session);
int RunLineGet(Session& session);
int RunLineSet(Session& session);
int RunLineRestore(Session& session);
int RunFileStrip(Session& session);
int RunFileReserve(Session& session);
int RunFileRestore(Session& session);
int RunFileForget(Session& session);
int RunOptionGet(Session& session);
int RunOptionSet(Session& session);
int RunExplain(Session& session);
int RunDoctor(Session& session);

}  // namespace ZET

#endif
