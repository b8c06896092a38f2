#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/FileDiagnosis.h"
#include "text/ChangedLines.h"
#include "zet/ZETProblem.h"

namespace ZET::Cli {

namespace {

struct DoctorOptions {
    std::string file;
};

std::string Remedy(const MarkerDamage& damage) {
    if (!damage.IsAmbiguous()) return damage.remedies.front();
    std::string remedy = "ambiguous: either " + damage.remedies.front();
    for (auto choice = damage.remedies.begin() + 1; choice != damage.remedies.end(); ++choice)
        remedy += "; or " + *choice;
    return remedy;
}

void ReportDamage(Report& out, const std::string& path, const MarkerDamage& damage) {
    const Problem problem{path, static_cast<int>(damage.line), 0, damage.text, Remedy(damage)};
    List choices;
    if (damage.IsAmbiguous()) choices.assign(damage.remedies.begin(), damage.remedies.end());
    Fields fields = FieldsOf(problem);
    fields.emplace_back("kind", damage.kind);
    fields.emplace_back("ambiguous", damage.IsAmbiguous());
    fields.emplace_back("choices", std::move(choices));
    out.Add("problems", std::move(fields));
    out.Line(problem.Describe());
}

void TellRepair(Session& session, const FileDiagnosis& file) {
    Secrets& secrets = session.Product().HostSecrets();
    if (secrets.Hides(file.path)) {
        session.Out().Remark(file.path + ": the repair: " + ChangedLines(file.repair) + " (" +
                             secrets.Excuse(file.path) + ")");
        return;
    }
    session.Out().Set("repair", file.repair);
    session.Out().Diff(file.repair);
}

int Doctor(Session& session, const DoctorOptions& asked) {
    Report& out = session.Out();
    out.Set("file", asked.file);
    out.Set("path", nullptr);
    out.Set("secret", nullptr);
    out.Set("repair", nullptr);
    out.AddList("problems");
    const FileDiagnosis file = DiagnoseFile(session.Product(), asked.file);
    out.Set("path", session.Product().HostPaths().RealName(file.path));
    out.Set("secret", file.isPrivate);
    for (const MarkerDamage& damage : file.diagnosis.damages)
        ReportDamage(out, file.path, damage);
    if (file.diagnosis.damages.empty()) {
        out.Line(file.path + ": no damage");
        return kDone;
    }
    if (!file.repair.empty()) TellRepair(session, file);
    return kFailed;
}

}  // namespace

void RegisterDoctor(CommandLine& line) {
    line.Single(Subject::AnyFile)
        .Add<DoctorOptions>("doctor", "Tell damaged markers of a file and a repair", Doctor)(
            "FILE", &DoctorOptions::file, "The file");
}

}  // namespace ZET::Cli
