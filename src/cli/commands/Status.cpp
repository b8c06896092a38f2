#include <algorithm>
#include <utility>

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/FileReport.h"
#include "cli/Metrics.h"
#include "cli/Session.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Signals.h"
#include "deploy/state/RoleStatus.h"
#include "deploy/targets/ConditionCheck.h"
#include "deploy/targets/TargetStates.h"
#include "text/Joined.h"
#include "text/ShellWord.h"
#include "zet/deploy/Failure.h"

namespace ZET::Cli {

namespace {

struct StatusOptions {
    bool changed = false;
    std::string format = "words";
};

constexpr char kInSync[] = ZET_TEXT("in sync");
constexpr char kInPlace[] = ZET_TEXT("in place");
constexpr char kUnknown[] = ZET_TEXT("unknown");

/// The other states, as the library names them, marked for translation.
[[maybe_unused]] constexpr const char* kTargetStates[] = {
    ZET_TEXT("pending"), ZET_TEXT("edited"), ZET_TEXT("missing"), ZET_TEXT("not committed"),
    ZET_TEXT("changed"), ZET_TEXT("gone"),   ZET_TEXT("differs")};
[[maybe_unused]] constexpr const char* kReasons[] = {
    ZET_TEXT("template refused"), ZET_TEXT("no regular file"), ZET_TEXT("made under another root")};

/// For a file that was committed and is no longer in force: the next commit takes it back, or leaves it.
constexpr char kLeftOver[] = ZET_TEXT("left over");
constexpr char kKept[] = ZET_TEXT("kept");

bool IsClient(const Session& session) {
    return session.Asked().role == Role::Client;
}

void BeginStatus(Session& session) {
    session.Out().Set("role", NameOf(session.Asked().role));
    session.Out().Set("commit_time", nullptr);
    session.Out().Set("file_server", nullptr);
    session.Out().AddList("targets");
    session.Out().AddList("edits");
    session.Out().AddList("listed_edits");
    session.Out().AddList("newer_templates");
}

void TellRole(Session& session, const RoleStatus& status) {
    Report& report = session.Out();
    if (!status.commitTime.empty()) report.Set("commit_time", status.commitTime);
    if (IsClient(session) && !status.fileServer.empty()) report.Set("file_server", status.fileServer);
    if (session.Asked().quiet) return;
    report.Line(Filled(_("role: %s"), {RoleName(session.Asked().role)}));
    const auto recorded = [](const std::string& found, bool isUnknown, const char* none) {
        return !found.empty() ? found : isUnknown ? _(kUnknown) : none;
    };
    report.Line(
        Filled(_("committed: %s"), {recorded(status.commitTime, status.isCommitTimeUnknown, _("never"))}));
    if (IsClient(session))
        report.Line(Filled(_("file server: %s"),
                           {recorded(status.fileServer, status.isFileServerUnknown, _("none recorded"))}));
}

/// Reports the trouble of a target or a listed line.
template <typename State>
void TellTrouble(Session& session, const State& of) {
    if (of.trouble.empty()) return;
    const char* const text =
        of.state == kUnknown ? _("its state cannot be told: %s") : _("its difference cannot be told: %s");
    session.Out().Error(of.path + ": " + Filled(text, {of.trouble}));
}

void TellTarget(Session& session, const TargetState& target) {
    TellTrouble(session, target);
    const std::string change = target.after.exists ? DescribeChange(target.before, target.after) : "";
    const std::string reason = target.reason.empty() ? "" : std::string(", ") + _(target.reason.c_str());
    session.Out().Line(target.path + ": " + _(target.state.c_str()) + reason +
                       (change.empty() ? "" : ", " + change));
    Fields fields = {{"template", target.templateName},
                     {"file", target.file},
                     {"path", session.Product().HostPaths().RealName(target.path)},
                     {"state", target.state},
                     {"reason", TextOrNull(target.reason)},
                     {"merged", target.isMerged}};
    AddDiff(fields, target.diff);
    session.Out().Add("targets", std::move(fields));
    TellDiff(session.Out(), target.diff);
}

bool GoesBack(const LeftOver& leftOver) {
    return leftOver.fate == LeftOver::Fate::GoesBack;
}

const char* WordOf(const LeftOver& leftOver) {
    return GoesBack(leftOver) ? kLeftOver : kKept;
}

std::vector<std::string> StatesOf(const TargetStates& states) {
    std::vector<std::string> names;
    for (const TargetState& target : states.targets)
        names.push_back(target.state);
    for (const LeftOver& leftOver : states.leftOvers)
        names.emplace_back(WordOf(leftOver));
    return names;
}

/// The states in the order of their first appearance, with their counts; in sync comes first.
std::string CountsOf(const std::vector<std::string>& states) {
    std::vector<std::pair<std::string, std::size_t>> counts = {{kInSync, 0}};
    for (const std::string& state : states) {
        const auto known = std::find_if(counts.begin(), counts.end(),
                                        [&](const auto& count) { return count.first == state; });
        if (known == counts.end()) {
            counts.emplace_back(state, 1);
        } else {
            ++known->second;
        }
    }
    std::string text;
    for (const auto& [state, count] : counts) {
        if (count != 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + _(state.c_str());
    }
    return text;
}

/// The last line: everything that a commit would handle.
std::string Summary(const TargetStates& states) {
    const std::string counts = CountsOf(StatesOf(states));
    const std::string targets = counts.empty() ? _("no targets") : counts;
    if (states.listedEdits.empty()) return targets;
    std::vector<std::string> edits;
    for (const ListedEditState& edit : states.listedEdits)
        edits.push_back(edit.state);
    return Filled(_("%s; edits: %s"), {targets, CountsOf(edits)});
}

/// Reports them as the targets that they were.
void TellLeftOvers(Session& session, const std::vector<LeftOver>& leftOvers) {
    const Paths& paths = session.Product().HostPaths();
    for (const LeftOver& leftOver : leftOvers) {
        TargetState target;
        target.templateName = leftOver.templateName;
        target.path = leftOver.path;
        target.file = paths.NameInside(leftOver.path);
        target.state = WordOf(leftOver);
        TellTarget(session, target);
    }
}

std::string WordsOf(const LeftOver& leftOver, const std::string& name) {
    switch (leftOver.fate) {
        case LeftOver::Fate::StaysEdited:
            return Filled(_("it was edited since, and stays until \"rollback-config --force %s\""),
                          {Text::ShellWord(name)});
        case LeftOver::Fate::StaysWithoutReserve:
            return Filled(_("it has no reserve, and stays; \"rollback-config --force %s\" forgets it"),
                          {Text::ShellWord(name)});
        case LeftOver::Fate::StaysOutOfReach:
            return Filled(_("its directory is not there; \"rollback-config --force %s\" forgets it"),
                          {Text::ShellWord(name)});
        case LeftOver::Fate::GoesBack:
            break;
    }
    return _("the next commit takes it back");
}

void WarnOfLeftOvers(Session& session, const std::vector<LeftOver>& leftOvers) {
    const Paths& paths = session.Product().HostPaths();
    const bool isCommitRefused = std::any_of(leftOvers.begin(), leftOvers.end(), GoesBack) &&
                                 !CheckConditions(session.Product()).problems.empty();
    for (const LeftOver& leftOver : leftOvers) {
        const std::string words =
            isCommitRefused && GoesBack(leftOver)
                ? _("every commit is refused until what \"check-config\" says of the conditions is corrected")
                : WordsOf(leftOver, paths.NameInside(leftOver.path));
        session.Out().Warning(leftOver.path + ": " +
                              Filled(_("was committed and is not in force any more (%s)"), {words}));
    }
}

/// Reports the lines that the lists ask for.
void TellListedEdits(Session& session, const std::vector<ListedEditState>& edits, bool onlyChanged) {
    for (const ListedEditState& edit : edits) {
        if (onlyChanged && edit.state == kInSync) continue;
        TellTrouble(session, edit);
        session.Out().Line(edit.path + ": " + Filled(_("line %s"), {edit.selector}) + ": " +
                           _(edit.state.c_str()));
        Fields fields = {
            {"path", edit.path},   {"name", TextOrNull(edit.name)}, {"selector", edit.selector},
            {"state", edit.state}, {"list", TextOrNull(edit.list)}, {"line", NumberOrNull(edit.line)}};
        AddDiff(fields, edit.diff);
        session.Out().Add("listed_edits", std::move(fields));
        TellDiff(session.Out(), edit.diff);
    }
}

/// Reports edits in place. They need no action, so they do not count.
void TellEdits(Session& session, const std::vector<EditState>& edits, bool onlyChanged) {
    for (const EditState& edit : edits) {
        if (onlyChanged && edit.state == kInPlace) continue;
        session.Out().Line(edit.path + ": " + Filled(_("edit %s"), {_(edit.state.c_str())}));
        session.Out().Add("edits", Fields{{"path", edit.path}, {"state", edit.state}});
    }
}

/// Reports newer templates. They do not affect the exit status: what was committed is in sync without them.
void TellNewer(Session& session, const std::vector<std::string>& names) {
    for (const std::string& name : names)
        session.Out().Add("newer_templates", name);
    if (names.empty() || session.Asked().quiet) return;
    session.Out().Line(Filled(_("newer shipped templates: %s (\"%s template upgrade\" takes them over)"),
                              {Text::Joined(names, ", "), session.Asked().program}));
}

int ExitStatusOf(const TargetStates& states) {
    const auto hasTrouble = [](const auto& state) { return !state.trouble.empty(); };
    if (states.IsAnyUnknown() || std::any_of(states.targets.begin(), states.targets.end(), hasTrouble) ||
        std::any_of(states.listedEdits.begin(), states.listedEdits.end(), hasTrouble))
        return kFailed;
    return states.IsInSync() ? kDone : kNotInSync;
}

int TellMetrics(Session& session) {
    if (session.Asked().json)
        throw UsageError(
            _("--json and --format=openmetrics ask for two different documents (leave one out)"));
    const RoleStatus role = RoleStatusOf(session.Product());
    const TargetStates states = StatesOfTargets(session.Product());
    for (const TargetState& target : states.targets)
        TellTrouble(session, target);
    for (const ListedEditState& edit : states.listedEdits)
        TellTrouble(session, edit);
    session.Out().Text(MetricsOf(session.Asked().role, role, states));
    return ExitStatusOf(states);
}

int Status(Session& session, const StatusOptions& asked) {
    const SignalGuard signals;
    BeginStatus(session);
    if (asked.format == "openmetrics") return TellMetrics(session);
    const bool onlyChanged = asked.changed || session.Asked().quiet;
    TellRole(session, RoleStatusOf(session.Product()));
    const TargetStates states = StatesOfTargets(session.Product());
    for (const TargetState& target : states.targets) {
        if (!onlyChanged || target.state != kInSync) TellTarget(session, target);
    }
    TellLeftOvers(session, states.leftOvers);
    TellListedEdits(session, states.listedEdits, onlyChanged);
    TellEdits(session, states.edits, onlyChanged);
    TellNewer(session, states.newerTemplates);
    if (!session.Asked().quiet) session.Out().Line(Summary(states));
    WarnOfLeftOvers(session, states.leftOvers);
    return ExitStatusOf(states);
}

}  // namespace

void RegisterStatus(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<StatusOptions>("status", "Tell the role and the state of each target", Status)
        .Flag("--changed", &StatusOptions::changed, "Only targets that are not in sync")
        .Choice("--format", {"words", "openmetrics"}, &StatusOptions::format,
                "For a reader, or in numbers for a monitor");
}

}  // namespace ZET::Cli
