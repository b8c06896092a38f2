#include "cli/ExitStatus.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/FileDiagnosis.h"
#include "text/ChangedLines.h"
#include "zet/ZETProblem.h"

namespace ZET {

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
    const int line = static_cast<int>(damage.line);
    const std::string remedy = Remedy(damage);
    List choices;
    if (damage.IsAmbiguous()) choices.assign(damage.remedies.begin(), damage.remedies.end());
    out.Add("problems", Fields{{"line", line},
                               {"kind", damage.kind},
                               {"text", damage.text},
                               {"remedy", remedy},
                               {"ambiguous", damage.IsAmbiguous()},
                               {"choices", std::move(choices)}});
    out.Line(Problem{path, line, 0, damage.text, remedy}.Describe());
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
    const FileDiagnosis file = DiagnoseFile(session.Product(), asked.file);
    out.Set("file", file.path);
    out.AddList("problems");
    out.Set("repair", nullptr);
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

}  // namespace ZET
