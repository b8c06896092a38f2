#include "deploy/targets/TemplateUpgrade.h"

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/TemplateCommands.h"

namespace ZET::Cli {

namespace {

struct UpgradeOptions {
    std::vector<std::string> names;
};

int Upgrade(Session& session, const UpgradeOptions& asked) {
    BeginFileReport(session);
    session.Out().AddList("problems");
    session.TellFilesBy(TellFile);
    TemplateUpgrade upgrade(session.Product(), asked.names);
    if (TellProblems(session, upgrade.Problems())) {
        session.Out().Remark(_("nothing was changed"));
        return kFailed;
    }
    const bool isAnyChange = upgrade.Run();
    return session.Asked().dryRun && isAnyChange ? kNotInSync : kDone;
}

}  // namespace

bool TellProblems(Session& session, const std::vector<Problem>& problems) {
    for (const Problem& problem : problems) {
        session.Out().Error(problem.Describe());
        session.Out().Add("problems", FieldsOf(problem));
    }
    return !problems.empty();
}

void TellFile(Session& session, const FileOutcome& outcome) {
    ReportFile(session, outcome);
}

void AddTemplateUpgrade(CommandFamily& family) {
    family.Add<UpgradeOptions>("upgrade", "Bring working copies up to the shipped templates", Upgrade)
        .Any("NAME", &UpgradeOptions::names, "Only these templates");
}

}  // namespace ZET::Cli
