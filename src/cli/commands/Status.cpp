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
#include "deploy/targets/TargetStates.h"
#include "zet/deploy/Failure.h"

namespace ZET::Cli {

namespace {

struct StatusOptions {
    bool changed = false;
    std::string format = "words";
};

constexpr char kInSync[] = ZET_TEXT("in sync");
constexpr char kInPlace[] = ZET_TEXT("in place");

/// The others, which come from the library and are shown in the reader's language.
[[maybe_unused]] constexpr const char* kStates[] = {
    ZET_TEXT("pending"), ZET_TEXT("edited"),  ZET_TEXT("missing"), ZET_TEXT("not committed"),
    ZET_TEXT("unknown"), ZET_TEXT("changed"), ZET_TEXT("gone"),    ZET_TEXT("differs")};

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
    report.Line(Filled(_("committed: %s"), {status.commitTime.empty() ? _("never") : status.commitTime}));
    if (IsClient(session))
        report.Line(Filled(_("file server: %s"),
                           {status.fileServer.empty() ? _("none recorded") : status.fileServer}));
}

void TellTrouble(Session& session, const TargetState& target) {
    if (!target.trouble.empty())
        session.Out().Error(target.path + ": " + Filled(_("its state cannot be told: %s"), {target.trouble}));
}

void TellTarget(Session& session, const TargetState& target) {
    TellTrouble(session, target);
    const std::string change = target.after.exists ? DescribeChange(target.before, target.after) : "";
    session.Out().Line(target.path + ": " + _(target.state.c_str()) + (change.empty() ? "" : ", " + change));
    Fields fields = {{"template", target.templateName},
                     {"file", target.file},
                     {"path", session.Product().HostPaths().RealName(target.path)},
                     {"state", target.state},
                     {"merged", target.isMerged}};
    AddDiff(fields, target.diff);
    session.Out().Add("targets", std::move(fields));
    TellDiff(session.Out(), target.diff);
}

/// The states in the order of the first that has it, each with how many have it; in sync comes first.
template <typename State>
std::string CountsOf(const std::vector<State>& states) {
    std::vector<std::pair<std::string, std::size_t>> counts = {{kInSync, 0}};
    for (const State& each : states) {
        const auto known = std::find_if(counts.begin(), counts.end(),
                                        [&](const auto& count) { return count.first == each.state; });
        if (known == counts.end()) {
            counts.emplace_back(each.state, 1);
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

/// The last line: all that a commit would see to.
std::string Summary(const TargetStates& states) {
    const std::string targets = states.targets.empty() ? _("no targets") : CountsOf(states.targets);
    if (states.listedEdits.empty()) return targets;
    return Filled(_("%s; edits: %s"), {targets, CountsOf(states.listedEdits)});
}

/// Lines that the lists ask for.
void TellListedEdits(Session& session, const std::vector<ListedEditState>& edits, bool onlyChanged) {
    for (const ListedEditState& edit : edits) {
        if (onlyChanged && edit.state == kInSync) continue;
        session.Out().Line(edit.path + ": " + Filled(_("line %s"), {edit.selector}) + ": " +
                           _(edit.state.c_str()));
        session.Out().Add("listed_edits", Fields{{"path", edit.path},
                                                 {"name", TextOrNull(edit.name)},
                                                 {"selector", edit.selector},
                                                 {"state", edit.state},
                                                 {"list", TextOrNull(edit.list)},
                                                 {"line", NumberOrNull(edit.line)}});
    }
}

/// Nothing has to be done about them, so that they do not count.
void TellEdits(Session& session, const std::vector<EditState>& edits, bool onlyChanged) {
    for (const EditState& edit : edits) {
        if (onlyChanged && edit.state == kInPlace) continue;
        session.Out().Line(edit.path + ": " + Filled(_("edit %s"), {_(edit.state.c_str())}));
        session.Out().Add("edits", Fields{{"path", edit.path}, {"state", edit.state}});
    }
}

/// The exit status does not depend on them: what was committed is in sync without them.
void TellNewer(Session& session, const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        session.Out().Add("newer_templates", name);
        text += (text.empty() ? "" : ", ") + name;
    }
    if (text.empty() || session.Asked().quiet) return;
    session.Out().Line(Filled(_("newer shipped templates: %s (\"%s template upgrade\" takes them over)"),
                              {text, session.Asked().program}));
}

int ExitStatusOf(const TargetStates& states) {
    if (states.IsAnyUnknown()) return kFailed;
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
    TellListedEdits(session, states.listedEdits, onlyChanged);
    TellEdits(session, states.edits, onlyChanged);
    TellNewer(session, states.newerTemplates);
    if (!session.Asked().quiet) session.Out().Line(Summary(states));
    for (const LeftOver& leftOver : states.leftOvers) {
        session.Out().Warning(
            leftOver.path + ": " +
            (leftOver.isEdited
                 ? _("was committed and is not in force any more (it was edited since, and stays "
                     "until \"rollback-config --force\")")
                 : _("was committed and is not in force any more (the next commit takes it back)")));
    }
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
