#include "ChangeReport.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <set>
#include <string_view>

#include "ExitStatus.h"
#include "FileBytes.h"
#include "FileOrigin.h"
#include "Manifest.h"
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

/// The file that a new one at `path` takes its owner from: the one that it replaces, or the reserve of one
/// that is gone.
FileState FormerState(const std::string& path) {
    const FileState replaced = StateOf(path);
    return replaced.IsRegular() ? replaced : StateOf(path + ZETReserveSuffix);
}

/// The one name of a file.
std::string NameOf(Session& session, const std::string& path) {
    const Paths& paths = session.HostPaths();
    return paths.Canonical(paths.NameInside(path));
}

/// Whether the name is that of a file's copy, which holds the same text; it is then the file's.
bool NameOriginal(std::string& name) {
    for (const std::string_view suffix : {ZETReserveSuffix, ZETTemporarySuffix, ".old"}) {
        if (!name.ends_with(suffix)) continue;
        name.resize(name.size() - suffix.size());
        return true;
    }
    return false;
}

/// The names of the file, and of those that it may be a copy of.
std::set<std::string> NamesOfText(Session& session, const std::string& path) {
    std::string name = NameOf(session, path);
    std::set<std::string> names;
    do {
        names.insert(name);
    } while (NameOriginal(name));
    return names;
}

/// The same of the templates that the file, its reserve or what it is a copy of says to be made from.
std::set<std::string> NamesOfTemplates(Session& session, const std::string& path) {
    std::set<std::string> files = NamesOfText(session, path);
    files.insert(NameOf(session, path + ZETReserveSuffix));
    std::set<std::string> names;
    for (const std::string& file : files) {
        const std::string named = TemplateNamedIn(session, file);
        if (!named.empty()) names.insert(NameOf(session, named));
    }
    return names;
}

/// The target itself, the template's working copy, and the pristine template.
bool HoldsTextOf(Session& session, const Target& target, const std::set<std::string>& names) {
    const std::string pristine = session.Param("ZET_CFG_TEMPL_DIR") + "/" + target.templateName;
    for (const std::string& file : {target.path, WorkingCopy(session, target.templateName), pristine}) {
        if (names.count(NameOf(session, file)) != 0) return true;
    }
    return false;
}

/// Nobody can tell any more whether a file was secret that was committed and is in no list.
bool HasLeftList(Session& session, const TargetList& list, const std::set<std::string>& names) {
    for (const char* role : {"server", "client"}) {
        for (const std::string& path : Manifest(session, role).Paths()) {
            const std::string file = session.HostPaths().NameInside(path);
            if (names.count(NameOf(session, path)) != 0 && !FindTargetByPath(session, list.targets, file))
                return true;
        }
    }
    return false;
}

/// Without a list, no target is secret.
TargetList ListThatIsThere(Session& session) {
    const std::string file = session.Param("ZET_CFG_TEMPL_DIR") + "/targets.ini";
    TargetList list = IsFileExist(file) ? ReadTargetList(session) : TargetList{file, {}, {}};
    if (!list.problems.empty()) throw Failure(file + ": the list of targets is broken (see check-config)");
    return list;
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

bool IsSecret(Session& session, const std::string& path, const char* what) {
    try {
        const TargetList list = ListThatIsThere(session);
        std::set<std::string> names = NamesOfText(session, path);
        if (HasLeftList(session, list, names)) return true;
        names.merge(NamesOfTemplates(session, path));
        return std::any_of(list.targets.begin(), list.targets.end(), [&](const Target& target) {
            return target.isSecret && HoldsTextOf(session, target, names);
        });
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        session.Out().Warning(std::string(error.what()) + "; so no " + what + " is shown");
        return true;
    }
}

std::string DiffToShow(Session& session, const std::string& oldFile, const std::string& newFile,
                       const std::string& path, const std::string& shownPath) {
    if (!session.Asked().diff || IsSecret(session, path)) return "";
    return UnifiedDiff(oldFile, newFile, ShownPath(shownPath.empty() ? path : shownPath));
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
