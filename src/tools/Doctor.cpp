#include <optional>
#include <string>

#include "ChangeReport.h"
#include "Commands.h"
#include "Diff.h"
#include "Edits.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "FileOrigin.h"
#include "MarkerDamage.h"
#include "Problem.h"
#include "Secrets.h"
#include "ShownDiff.h"
#include "Staging.h"

namespace ZET {

namespace {

/// Whether the file's lines ended with carriage returns before the system wrote it: its template or its
/// reserve knows.
std::optional<bool> HadCarriageReturns(const std::string& path, const FileOrigin& origin) {
    const std::string source = origin.isMade ? origin.templateFile : ReserveOf(path);
    if (source.empty()) return std::nullopt;
    return ReadFileBytes(source).find('\r') != std::string::npos;
}

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

std::string RepairDiff(const std::string& path, const std::string& read, const std::string& repaired) {
    const Staging staging;
    const std::string before = staging.PathOf("before");
    const std::string after = staging.PathOf("after");
    WriteStagedFile(before, read, 0600);
    WriteStagedFile(after, repaired, 0600);
    return UnifiedDiff(before, after, ShownPath(path));
}

}  // namespace

int RunDoctor(Session& session) {
    Report& out = session.Out();
    const std::string path = FileToRead(session, session.Asked().file);
    const std::string bytes = ReadFileBytes(path);
    const NoticeTexts noticeTexts = WrittenNoticeTexts(session);
    const FileOrigin origin = FindOrigin(session, session.Asked().file, ManagedText(bytes), noticeTexts);
    const bool hasCarriageReturns = bytes.find('\r') != std::string::npos;
    const Diagnosis diagnosis = DiagnoseMarkers(
        bytes, noticeTexts, hasCarriageReturns ? HadCarriageReturns(path, origin) : std::nullopt);

    out.Set("file", path);
    out.AddList("problems");
    out.Set("repair", nullptr);
    out.Set("secret", origin.isPrivate);
    for (const MarkerDamage& damage : diagnosis.damages)
        ReportDamage(out, path, damage);
    if (diagnosis.damages.empty()) {
        out.Line(path + ": no damage");
        return kDone;
    }
    if (diagnosis.repaired == bytes) return kFailed;
    const std::string diff = RepairDiff(path, bytes, diagnosis.repaired);
    if (session.HostSecrets().Hides(path)) {
        out.Remark(path + ": the repair: " + ChangedLines(diff) + " (" + session.HostSecrets().Excuse(path) +
                   ")");
        return kFailed;
    }
    out.Set("repair", diff);
    out.Diff(diff);
    return kFailed;
}

}  // namespace ZET
