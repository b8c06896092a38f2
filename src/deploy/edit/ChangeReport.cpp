#include "deploy/edit/ChangeReport.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "cli/ExitStatus.h"
#include "deploy/host/FileBytes.h"
#include "deploy/targets/Secrets.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

std::string Text(const FileReport& report, bool isDryRun) {
    std::string text = report.path + ": ";
    if (report.change == "unchanged") {
        text += report.change;
    } else {
        text += (isDryRun ? "would be " : "") + report.change;
        const std::string attributes =
            report.before.exists ? DescribeChange(report.before, report.after) : "";
        if (!attributes.empty()) text += ", " + attributes;
    }
    return report.remark.empty() ? text : text + ", " + report.remark;
}

/// The file that a new one at `path` takes its owner from: the one that it replaces, or the reserve of one
/// that is gone.
FileState FormerState(const std::string& path) {
    const FileState replaced = StateOf(path);
    return replaced.IsRegular() ? replaced : StateOf(path + ZETReserveSuffix);
}

bool IsPrivate(Session& session, const FileReport& report) {
    return report.diff.isPrivate || Secrets::IsClosed(report.before) || Secrets::IsClosed(report.after) ||
           session.HostSecrets().IsPrivate(report.path);
}

/// Where the texts differ, without the texts.
ShownDiff WithoutText(ShownDiff diff, const std::string& path, const std::string& excuse) {
    const std::string lines = ChangedLines(diff.text);
    diff.text.clear();
    diff.excuse = excuse;
    if (!lines.empty()) diff.places.emplace_back(path + ": " + lines);
    return diff;
}

}  // namespace

void BeginFileReport(Session& session) {
    session.Out().Set("dry_run", session.Asked().dryRun);
    session.Out().AddList("files");
}

int ReportFile(Session& session, const FileReport& report) {
    const Request& asked = session.Asked();
    Report& out = session.Out();
    Fields fields = {{"file", report.file},
                     {"path", session.HostPaths().RealName(report.path)},
                     {"change", report.change}};
    const bool isUnchanged = report.change == "unchanged";
    if (!isUnchanged) {
        for (auto& field : ChangeFields(report.before, report.after))
            fields.push_back(std::move(field));
    }
    fields.emplace_back("reserve", report.reserve.empty() ? Value(nullptr) : Value(report.reserve));
    if (asked.json) fields.emplace_back("secret", IsPrivate(session, report));
    if (asked.diff) report.diff.AddTo(fields);
    out.Set("dry_run", asked.dryRun);
    out.Add("files", std::move(fields));
    if (!asked.quiet) out.Line(Text(report, asked.dryRun));
    report.diff.Tell(out);
    return asked.dryRun && !isUnchanged ? kNotInSync : kDone;
}

std::string ShownPath(const std::string& path) {
    if (("/" + path + "/").find("/../") == std::string::npos) return path;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path)).string();
}

ShownDiff DiffToShow(Session& session, const std::string& oldFile, const std::string& newFile,
                     const std::string& path, const std::string& shownPath) {
    ShownDiff diff;
    if (!session.Asked().diff) return diff;
    const std::string shown = ShownPath(shownPath.empty() ? path : shownPath);
    const auto isClosed = [](const std::string& file) { return !file.empty() && Secrets::IsClosed(file); };
    diff.isPrivate = session.HostSecrets().IsPrivate(path) || isClosed(oldFile) || isClosed(newFile);
    diff.text = UnifiedDiff(oldFile, newFile, shown);
    if (!diff.isPrivate || session.Asked().showSecrets) return diff;
    return WithoutText(std::move(diff), shown, session.HostSecrets().Excuse(path));
}

FileState StateInPlace(const std::string& path, const std::string& staged) {
    FileState state = StateOf(staged);
    const FileState directory = StateOf(DirectoryOf(path) + "/.");
    state.owner = geteuid();
    state.group = (directory.mode & S_ISGID) != 0 ? directory.group : getegid();
    const FileState former = FormerState(path);
    if (!former.IsRegular()) return state;
    GiveStagedFile(staged, former.owner, former.group);
    const FileState given = StateOf(staged);
    if (given.owner == former.owner) state.owner = given.owner;
    if (given.group == former.group) state.group = given.group;
    return state;
}

std::string ReserveOf(const std::string& path) {
    const std::string reserve = path + ZETReserveSuffix;
    return IsFileExist(reserve) ? reserve : "";
}

std::string ReserveAfterChange(const std::string& path) {
    return IsFileExist(path) && !IsFileExist(path + ZETAbsenceSuffix) ? path + ZETReserveSuffix
                                                                      : ReserveOf(path);
}

}  // namespace ZET
