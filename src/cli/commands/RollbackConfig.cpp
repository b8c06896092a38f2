#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/commands/Commands.h"
#include "deploy/targets/Rollback.h"

namespace ZET {

namespace {

void TellTarget(Session& session, const FileOutcome& outcome) {
    if (!session.Asked().quiet) session.Out().Line(outcome.path + ": " + outcome.remark);
    TellDiff(session.Out(), outcome.diff);
    Fields fields = {
        {"template", outcome.templateName.empty() ? Value(nullptr) : Value(outcome.templateName)},
        {"path", session.Product().HostPaths().RealName(outcome.path)},
        {"change", NameOf(outcome.result)}};
    if (session.Asked().json)
        fields.emplace_back(
            "secret", outcome.diff.isPrivate || session.Product().HostSecrets().IsPrivate(outcome.path));
    if (session.Asked().diff) AddDiff(fields, outcome.diff);
    session.Out().Add("targets", std::move(fields));
}

}  // namespace

int RunRollbackConfig(Session& session) {
    BeginTargets(session, TellTarget);
    const RollbackResult result = RollBack(session.Product(), session.Asked().names, session.Asked().force);
    if (session.Asked().dryRun && result.isChanged) return kNotInSync;
    return result.isKept ? kFailed : kDone;
}

}  // namespace ZET
