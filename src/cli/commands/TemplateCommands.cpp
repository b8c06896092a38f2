#include <algorithm>
#include <map>

#include "cli/Assignments.h"
#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/edit/ChangeReport.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/ClaimedFiles.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/ZETFiles.h"

namespace ZET {

namespace {

constexpr char kOldSuffix[] = ".old";
constexpr char kStandardOutput[] = "-";

void RequireTemplateName(const std::string& name) {
    if (name.empty() || name.front() == '/' || name.back() == '/' ||
        ("/" + name + "/").find("/../") != std::string::npos) {
        throw UsageError("NAME \"" + name +
                         "\" leaves the directory of the templates (name a template below it)");
    }
}

/// One working copy to install.
class Installation {
  public:
    Installation(Session& session, const std::string& name)
        : m_session(session),
          m_name(name),
          m_pristine(session.Param("ZET_CFG_TEMPL_DIR") + "/" + name),
          m_path(WorkingCopy(session, name)),
          m_old(m_path + kOldSuffix) {}

    const std::string& Name() const { return m_name; }

    /// What it writes, at most.
    std::vector<std::string> Files() const {
        if (m_session.Asked().force && IsFileExist(m_path)) return {m_path, m_old};
        return {m_path};
    }

    /// Throws whatever would keep it from being installed; until all were checked, none is installed.
    void Check() {
        for (const std::string& file : {m_pristine, m_path}) {
            if (!m_session.HostPaths().StaysInside(file))
                throw Failure(file + ": is a link that leads out of the root directory (put a file there)");
        }
        if (!IsFileExist(m_pristine)) {
            throw Failure(m_pristine + ": the template is missing (correct its name, or ZET_CFG_TEMPL_DIR)");
        }
        RequireReadableFile(m_pristine);
        for (const std::string& file : {m_pristine, m_path})
            RequireOwnInstruction(m_session, file);
        m_isThere = IsFileExist(m_path);
        if (!m_isThere) return;
        RequireReadableFile(m_path);
        m_isSame = HaveSameModeAndBytes(m_path, m_pristine);
        if (m_isSame) return;
        if (!m_session.Asked().force) {
            if (m_session.Asked().diff) ShowDifference();
            throw Failure(m_path + ": differs from " + m_pristine +
                          " (--force installs that one, and keeps "
                          "the differing one as " +
                          m_old + ")");
        }
        if (IsFileExist(m_old) && !HaveSameBytes(m_old, m_path))
            throw Failure(m_old + ": would be overwritten by the differing " + m_path + " (move it away)");
    }

    int Run(Writing& writing) {
        FileReport report{m_name, m_path, "unchanged", StateOf(m_path), StateOf(m_pristine), "", "", {}};
        if (m_isSame) return ReportFile(m_session, report);
        report.change = m_isThere ? "changed" : "created";
        const std::string tense = m_session.Asked().dryRun ? "would be" : "is";
        if (m_isThere) report.remark = "the former one " + tense + " kept as " + m_old;
        report.diff = DiffToShow(m_session, m_isThere ? m_path : "", m_pristine, m_path);
        if (!m_session.Asked().dryRun) {
            writing.Begin();
            if (m_isThere) CopyFile(m_path, m_old);
            Install();
            report.after = StateOf(m_path);
        }
        return ReportFile(m_session, report);
    }

  private:
    /// What --force would change.
    void ShowDifference() {
        const FileState state = StateOf(m_path);
        ReportFile(m_session, {m_name, m_path, "unchanged", state, state, "", "differs from " + m_pristine,
                               DiffToShow(m_session, m_path, m_pristine, m_path)});
    }

    void Install() {
        const LoggedFailures failures;
        m_session.Config().InstallConfigFileTemplate(m_name);
        if (failures.Any() || !HaveSameBytes(m_path, m_pristine))
            throw Failure(m_path + ": was not installed from " + m_pristine + " (run the command again)");
    }

    Session& m_session;
    std::string m_name;
    std::string m_pristine;
    std::string m_path;
    std::string m_old;
    bool m_isThere = false;
    bool m_isSame = false;
};

/// All that they write. Two of them must not write the same file: what the first one kept would be lost.
std::vector<std::string> FilesOf(Session& session, const std::vector<Installation>& installations) {
    std::vector<std::string> files;
    std::map<std::string, std::string> nameOf;
    const Paths& paths = session.HostPaths();
    const ClaimedFiles own(session);
    for (const Installation& installation : installations) {
        for (std::string& file : installation.Files()) {
            const std::string use = own.UseBesideTargets(file);
            if (!use.empty()) {
                throw UsageError("NAME \"" + installation.Name() + "\" is installed as " + file +
                                 ", which is " + use + " (give the template another name)");
            }
            const auto [other, isNew] =
                nameOf.emplace(paths.Canonical(paths.NameInside(file)), installation.Name());
            if (!isNew) {
                throw UsageError("NAME \"" + installation.Name() + "\" is installed into the files of \"" +
                                 other->second + "\" too (name each file once)");
            }
            files.push_back(std::move(file));
        }
    }
    return files;
}

/// The caller's own values by placeholder.
StringMap ExtraValues(Session& session) {
    StringMap values;
    for (const auto& [name, value] : ParseAssignments(session.Asked().assignments, "--value")) {
        if (name.find_first_of("${}") != std::string::npos)
            throw UsageError("--value: \"" + name +
                             "\" is no name of a placeholder (write it without \"${}\")");
        values["${" + name + "}"] = value;
    }
    return values;
}

bool CheckTemplateToRender(Session& session, const StringMap& extra) {
    StringMap values = extra;
    values.insert(session.Config().TemplatesValues().begin(), session.Config().TemplatesValues().end());
    const std::vector<Problem> problems = CheckTemplateFile(session, session.Asked().name, values);
    for (const Problem& problem : problems) {
        session.Out().Error(problem.Describe());
        session.Out().Add("problems", problem.ToFields());
    }
    return problems.empty();
}

/// Prints what the template renders to, and writes nothing.
int PrintRendering(Session& session, StringMap& values) {
    const Request& asked = session.Asked();
    session.Out().Set("secret", nullptr);  // as long as there is nothing to print
    session.Out().Set("text", nullptr);
    if (!CheckTemplateToRender(session, values)) return kFailed;
    const std::string source = TemplateFile(session, asked.name);
    session.Out().Set("secret", session.HostSecrets().IsPrivate(source));
    session.HostSecrets().RequireShown(source);
    const Staging staging;
    const QuietLog quiet(asked, ZETLogWarning);
    const std::string text = ReadFileBytes(RenderStaged(session, staging, asked.name, &values));
    session.Out().Set("text", text);
    session.Out().Text(text);
    return kDone;
}

/// A target of the list may be made by hand, too, but nothing that stands beside one.
void RequireFreeTarget(Session& session, const std::string& path) {
    ClaimedFiles claimed(session);
    claimed.AddTemplate(session.Asked().name);
    try {
        claimed.AddListed(ReadTargetList(session).targets);
    } catch (const Failure&) {
        // Without a list that can be used, nothing is known to be a target.
    }
    if (const auto clash = claimed.ClashOf(session.Asked().name)) throw Failure(clash->Describe());
    const std::string use = claimed.UseBesideTargets(path);
    if (!use.empty()) throw Failure(path + ": is " + use + " (name another file)");
}

/// As a commit warns of them.
void WarnOfEdits(Session& session, const std::string& path) {
    if (!Manifest::IsEdited(session, session.HostPaths().RealName(path))) return;
    session.Out().Warning(path + ": was edited since the last commit; the edits" +
                          (session.Asked().dryRun ? " would be " : " are ") + "overwritten");
}

/// What is made of a template is as private as the template.
ShownDiff DiffOfRendering(Session& session, const std::string& before, const std::string& made,
                          const std::string& path) {
    const std::string source = WorkingCopy(session, session.Asked().name);
    const bool isPrivate = session.HostSecrets().IsPrivate(source);
    return DiffToShow(session, before, made, isPrivate ? source : path, path);
}

/// What putting `made` into the target's place does, or would do.
FileReport Planned(Session& session, const std::string& path, const std::string& made,
                   const FileState& after) {
    FileReport report{session.Asked().target, path, "created", StateOf(path), {}, "", "", {}};
    report.after = after;
    if (report.before.exists) {
        const bool isSame = report.before.mode == report.after.mode && HaveSameBytes(path, made);
        report.change = isSame ? "unchanged" : "changed";
    }
    report.reserve = report.change == "unchanged" ? ReserveOf(path) : ReserveAfterChange(path);
    if (report.change != "unchanged")
        report.diff = DiffOfRendering(session, report.before.exists ? path : "", made, path);
    if (report.change == "changed") WarnOfEdits(session, path);
    return report;
}

FileReport RenderInTrial(Session& session, const std::string& path, StringMap& values) {
    const Staging staging;
    const QuietLog quiet(session.Asked(), ZETLogWarning);
    const std::string staged = RenderStaged(session, staging, session.Asked().name, &values);
    return Planned(session, path, staged, StateInPlace(path, staged));
}

FileReport RenderInPlace(Session& session, const std::string& path, StringMap& values) {
    FileReport report;
    const FileInPlace place(session.HostPaths().Find(session.Asked().target), path);
    // As in a dry run, there may be no working copy yet.
    const mode_t mode = ModeOf(TemplateFile(session, session.Asked().name));
    InstallForHolder(session, session.Asked().name, place);
    Replacement replacement(session, place, VersionOf(path));
    const auto judge = [&](const std::string& made) {
        report = Planned(session, path, made, StateOf(made));
        SignalGuard::Check();
        if (report.change == "unchanged") throw LeftAsItIs();
        replacement.KeepOriginal();
    };
    try {
        replacement.Make(
            mode,
            [&](const std::string& name) { RenderOnce(session, session.Asked().name, name, path, values); },
            judge);
    } catch (const LeftAsItIs&) {
        return report;
    }
    report.after = StateOf(path);
    if (!report.reserve.empty()) report.remark = "the original is kept as " + report.reserve;
    return report;
}

}  // namespace

int RunTemplateInstall(Session& session) {
    BeginFileReport(session);
    std::vector<Installation> installations;
    for (const std::string& name : session.Asked().names) {
        RequireTemplateName(name);
        installations.emplace_back(session, name);
    }
    Writing writing(session, FilesOf(session, installations), Writing::Right::OfTheProduct);
    for (Installation& installation : installations)
        installation.Check();
    int status = kDone;
    for (Installation& installation : installations) {
        SignalGuard::Check();
        status = std::max(status, installation.Run(writing));
    }
    return status;
}

int RunTemplateProcess(Session& session) {
    const Request& asked = session.Asked();
    BeginFileReport(session);
    RequireTemplateName(asked.name);
    if (asked.target.empty()) throw UsageError("TARGET is empty (name a file)");
    StringMap values = ExtraValues(session);
    if (asked.target == kStandardOutput) return PrintRendering(session, values);
    const std::string path = session.FilePath(asked.target);
    RequireFreeTarget(session, path);
    if (StateOf(path).exists) RequireReadableFile(path);
    std::vector<std::string> files = {path};
    const std::string workingCopy = WorkingCopy(session, asked.name);
    if (!IsFileExist(workingCopy)) files.push_back(workingCopy);
    Writing writing(session, files, Writing::Right::OfTheProduct);
    if (!CheckTemplateToRender(session, values)) {
        session.Out().Remark("nothing was changed");
        return kFailed;
    }
    if (asked.dryRun) return ReportFile(session, RenderInTrial(session, path, values));
    writing.Begin();
    return ReportFile(session, RenderInPlace(session, path, values));
}

}  // namespace ZET
