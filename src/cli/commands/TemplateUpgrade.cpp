#include "deploy/targets/TemplateUpgrade.h"

#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
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
    if (TellRefusal(session, upgrade.Problems())) return kFailed;
    const bool isAnyChange = upgrade.Run();
    return StatusAfter(session, isAnyChange);
}

}  // namespace

void AddTemplateUpgrade(CommandFamily& family) {
    family.Add<UpgradeOptions>("upgrade", "Bring working copies up to the shipped templates", Upgrade)
        .Any("NAME", &UpgradeOptions::names, "Only these templates");
}

}  // namespace ZET::Cli
