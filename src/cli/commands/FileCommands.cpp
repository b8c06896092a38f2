#include "cli/FileReport.h"
#include "cli/commands/Commands.h"
#include "deploy/edit/Reserves.h"

namespace ZET {

int RunFileStrip(Session& session) {
    BeginFileReport(session);
    return ReportFile(session, StripFile(session.Product(), session.Asked().file, session.Asked().edit));
}

int RunFileReserve(Session& session) {
    BeginFileReport(session);
    return ReportFile(session, ReserveFile(session.Product(), session.Asked().file));
}

int RunFileRestore(Session& session) {
    BeginFileReport(session);
    return ReportFile(session, RestoreFile(session.Product(), session.Asked().file));
}

int RunFileForget(Session& session) {
    BeginFileReport(session);
    return ReportFile(session, ForgetReserve(session.Product(), session.Asked().file, session.Asked().edit));
}

}  // namespace ZET
