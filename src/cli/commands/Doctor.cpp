#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/FileRepair.h"
#include "deploy/host/Failure.h"
#include "text/ChangedLines.h"
#include "zet/ZETProblem.h"

namespace ZET::Cli {

namespace {

struct DoctorOptions : EditOptions {
    std::string file;
    bool fix = false;
};

std::string Remedy(const Text::MarkerDamage& damage) {
    if (!damage.IsAmbiguous()) return damage.remedies.front();
    std::string choices = damage.remedies.front();
    for (auto choice = damage.remedies.begin() + 1; choice != damage.remedies.end(); ++choice)
        choices = Filled(_("%s; or %s"), {choices, *choice});
    return Filled(_("ambiguous: either %s"), {choices});
}

void ReportDamage(Report& out, const std::string& path, const Text::MarkerDamage& damage) {
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

/// `isShown` is set if nothing is written; after a repair, --diff shows the difference.
void TellRepair(Session& session, const FileDiagnosis& file, bool isShown) {
    Secrets& secrets = session.Product().HostSecrets();
    if (secrets.Hides(file.path)) {
        if (!isShown) return;
        session.Out().Remark(file.path + ": " +
                             Filled(_("the repair: %s"), {Text::ChangedLines(file.repair)}) + " (" +
                             secrets.Excuse(file.path) + ")");
        return;
    }
    session.Out().Set("repair", file.repair);
    if (isShown) session.Out().Diff(file.repair);
}

/// False if there is no damage.
bool TellDamage(Session& session, const FileDiagnosis& file, bool isShown) {
    Report& out = session.Out();
    out.Set("path", session.Product().HostPaths().RealName(file.path));
    out.Set("secret", file.isPrivate);
    for (const Text::MarkerDamage& damage : file.diagnosis.damages)
        ReportDamage(out, file.path, damage);
    if (!file.repair.empty()) TellRepair(session, file, isShown);
    return !file.diagnosis.damages.empty();
}

int Fix(Session& session, const DoctorOptions& asked) {
    FileRepair repair(session.Product(), asked.file);
    TellDamage(session, repair.Found(), false);
    const int status = ReportFile(session, repair.Make(asked.noBackup));
    return repair.IsAnyLeft() ? kFailed : status;
}

int Doctor(Session& session, const DoctorOptions& asked) {
    Report& out = session.Out();
    out.Set("file", asked.file);
    out.Set("path", nullptr);
    out.Set("secret", nullptr);
    out.Set("repair", nullptr);
    out.AddList("problems");
    BeginFileReport(session);
    if (asked.fix) return Fix(session, asked);
    if (asked.noBackup) throw UsageError(_("--no-backup is for --fix (say both)"));
    const FileDiagnosis file = DiagnoseFile(session.Product(), asked.file);
    if (TellDamage(session, file, true)) return kFailed;
    out.Line(file.path + ": " + _("no damage"));
    return kDone;
}

}  // namespace

void RegisterDoctor(CommandLine& line) {
    auto command = line.Single(Subject::AnyFile)
                       .Add<DoctorOptions>("doctor", "Tell damaged markers of a file and a repair", Doctor);
    command("FILE", &DoctorOptions::file, "The file");
    command.Flag("--fix", &DoctorOptions::fix, "Write what is certain of the repair");
    AddNoBackup(command);
}

}  // namespace ZET::Cli
