#include "ChangeReport.h"

#include <algorithm>
#include <filesystem>

#include "ExitStatus.h"
#include "Render.h"
#include "Targets.h"
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

}  // namespace

int ReportFile(Session& session, const FileReport& report) {
    const Request& asked = session.Asked();
    Report& out = session.Out();
    Fields fields = {{"file", report.file}, {"path", report.path}, {"change", report.change}};
    const bool isUnchanged = report.change == "unchanged";
    if (!isUnchanged) {
        for (auto& field : ChangeFields(report.before, report.after))
            fields.push_back(std::move(field));
    }
    fields.emplace_back("reserve", report.reserve.empty() ? Value(nullptr) : Value(report.reserve));
    if (asked.diff) fields.emplace_back("diff", report.diff);
    out.Set("dry_run", asked.dryRun);
    out.Add("files", std::move(fields));
    if (!asked.quiet) out.Line(Text(report, asked.dryRun));
    out.Diff(report.diff);
    return asked.dryRun && !isUnchanged ? kNotInSync : kDone;
}

std::string ShownPath(const std::string& path) {
    if (("/" + path + "/").find("/../") == std::string::npos) return path;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path)).string();
}

bool IsSecret(Session& session, const std::string& path) {
    if (!IsFileExist(session.Param("ZET_CFG_TEMPL_DIR") + "/targets.ini")) return false;
    try {
        const TargetList list = ReadTargetList(session);
        const Paths& paths = session.HostPaths();
        const auto isThis = [&, file = paths.Canonical(paths.NameInside(path))](const std::string& other) {
            return paths.Canonical(paths.NameInside(other)) == file;
        };
        return std::any_of(list.targets.begin(), list.targets.end(), [&](const Target& target) {
            return target.isSecret &&
                   (isThis(target.path) || isThis(WorkingCopy(session, target.templateName)));
        });
    } catch (const Failure& failure) {
        session.Out().Warning(std::string(failure.what()) + "; so no diff is shown");
        return true;
    }
}

std::string DiffToShow(Session& session, const std::string& oldFile, const std::string& newFile,
                       const std::string& path, const std::string& shownPath) {
    if (!session.Asked().diff || IsSecret(session, path)) return "";
    return UnifiedDiff(oldFile, newFile, ShownPath(shownPath.empty() ? path : shownPath));
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
