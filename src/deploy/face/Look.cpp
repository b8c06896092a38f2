#include <utility>

#include "deploy/edit/FileDiagnosis.h"
#include "deploy/edit/FileExplanation.h"
#include "deploy/edit/FileRepair.h"
#include "deploy/face/Parts.h"
#include "deploy/state/RoleStatus.h"
#include "deploy/targets/TargetStates.h"
#include "zet/deploy/Doctor.h"
#include "zet/deploy/Explain.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

Status StatusOf(Product& product) {
    return Use(product, [](Deployment& deployment) {
        return Status{RoleStatusOf(deployment), StatesOfTargets(deployment)};
    });
}

Explanation Explain(Product& product, const std::string& file) {
    const FileExplanation found =
        Use(product, [&](Deployment& deployment) { return ExplainFile(deployment, file); });
    Explanation result{found.path,    found.origin.templateName, found.origin.templateFile,
                       found.reserve, found.hadNoFile,           {}};
    found.lines->ForEach([&](const Text::ExplainedLines& lines) {
        result.regions.push_back({NameOf(lines.kind), lines.first, lines.last, lines.isClosed,
                                  lines.templateLine, lines.formerLine, lines.block,
                                  found.isHidden ? "" : std::string(lines.formerText), lines.placeholders});
    });
    return result;
}

static Diagnosis Told(Deployment& deployment, const FileDiagnosis& found) {
    Diagnosis result{found.path, {}, ""};
    for (const Text::MarkerDamage& damage : found.diagnosis.damages)
        result.problems.push_back({damage.line, damage.kind, damage.text, damage.remedies});
    if (!deployment.HostSecrets().Hides(found.path)) result.repair = found.repair;
    return result;
}

Diagnosis Diagnose(Product& product, const std::string& file) {
    return Use(product,
               [&](Deployment& deployment) { return Told(deployment, DiagnoseFile(deployment, file)); });
}

Repair Fix(Product& product, const std::string& file, const EditOptions& options) {
    return Use(product, [&](Deployment& deployment) {
        FileRepair repair(deployment, file);
        Diagnosis found = Told(deployment, repair.Found());
        return Repair{std::move(found), repair.Make(options.noBackup)};
    });
}

}  // namespace ZET::Deploy
