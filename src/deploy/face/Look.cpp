#include "deploy/edit/FileDiagnosis.h"
#include "deploy/edit/FileExplanation.h"
#include "deploy/face/Parts.h"
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
    for (const ExplainedLines& lines : found.lines) {
        result.regions.push_back({NameOf(lines.kind), lines.first, lines.last, lines.isClosed,
                                  lines.templateLine, lines.formerLine, lines.block,
                                  found.isHidden ? "" : std::string(lines.formerText), lines.placeholders});
    }
    return result;
}

Diagnosis Diagnose(Product& product, const std::string& file) {
    return Use(product, [&](Deployment& deployment) {
        const FileDiagnosis found = DiagnoseFile(deployment, file);
        Diagnosis result{found.path, {}, ""};
        for (const MarkerDamage& damage : found.diagnosis.damages)
            result.problems.push_back({damage.line, damage.kind, damage.text, damage.remedies});
        if (!deployment.HostSecrets().Hides(found.path)) result.repair = found.repair;
        return result;
    });
}

}  // namespace ZET::Deploy
