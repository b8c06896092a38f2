#include <algorithm>
#include <utility>

#include "cli/ExitStatus.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Signals.h"
#include "deploy/targets/TargetStates.h"

namespace ZET::Cli {

namespace {

struct StatusOptions {
    bool changed = false;
};

constexpr char kInSync[] = "in sync";
constexpr char kInPlace[] = "in place";

bool IsClient(const Session& session) {
    return session.Asked().role == Role::Client;
}

void BeginStatus(Session& session) {
    session.Out().Set("role", NameOf(session.Asked().role));
    session.Out().Set("commit_time", nullptr);
    session.Out().Set("file_server", nullptr);
    session.Out().AddList("targets");
    session.Out().AddList("edits");
    session.Out().AddList("newer_templates");
}

void TellRole(Session& session, const RoleStatus& status) {
    Report& report = session.Out();
    if (!status.commitTime.empty()) report.Set("commit_time", status.commitTime);
    if (IsClient(session) && !status.fileServer.empty()) report.Set("file_server", status.fileServer);
    if (session.Asked().quiet) return;
    report.Line(std::string("role: ") + NameOf(session.Asked().role));
    report.Line("committed: " + (status.commitTime.empty() ? "never" : status.commitTime));
    if (IsClient(session))
        report.Line("file server: " + (status.fileServer.empty() ? "none recorded" : status.fileServer));
}

void TellTarget(Session& session, const TargetState& target) {
    if (!target.trouble.empty())
        session.Out().Error(target.path + ": its state cannot be told: " + target.trouble);
    session.Out().Line(target.path + ": " + target.state);
    session.Out().Add("targets", Fields{{"template", target.templateName},
                                        {"file", target.file},
                                        {"path", session.Product().HostPaths().RealName(target.path)},
                                        {"state", target.state}});
}

/// The states in the order of their first target, each with how many have it; in sync comes first.
std::string CountsOf(const std::vector<TargetState>& targets) {
    std::vector<std::pair<std::string, std::size_t>> counts = {{kInSync, 0}};
    for (const TargetState& target : targets) {
        const auto known = std::find_if(counts.begin(), counts.end(),
                                        [&](const auto& count) { return count.first == target.state; });
        if (known == counts.end()) {
            counts.emplace_back(target.state, 1);
        } else {
            ++known->second;
        }
    }
    std::string text;
    for (const auto& [state, count] : counts) {
        if (count != 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + state;
    }
    return text.empty() ? "no targets" : text;
}

/// Nothing has to be done about them, so that they do not count.
void TellEdits(Session& session, const std::vector<EditState>& edits, bool onlyChanged) {
    for (const EditState& edit : edits) {
        if (onlyChanged && edit.state == kInPlace) continue;
        session.Out().Line(edit.path + ": edit " + edit.state);
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
    session.Out().Line("newer shipped templates: " + text + " (\"" + session.Asked().program +
                       " template upgrade\" takes them over)");
}

int Status(Session& session, const StatusOptions& asked) {
    const SignalGuard signals;
    BeginStatus(session);
    const bool onlyChanged = asked.changed || session.Asked().quiet;
    TellRole(session, RoleStatusOf(session.Product()));
    const TargetStates states = StatesOfTargets(session.Product());
    for (const TargetState& target : states.targets) {
        if (!onlyChanged || target.state != kInSync) TellTarget(session, target);
    }
    TellEdits(session, states.edits, onlyChanged);
    TellNewer(session, states.newerTemplates);
    if (!session.Asked().quiet) session.Out().Line(CountsOf(states.targets));
    for (const std::string& path : states.leftOvers) {
        session.Out().Warning(path +
                              ": was committed and is not in the list of targets any more "
                              "(\"rollback-config\" puts it back)");
    }
    if (states.IsAnyUnknown()) return kFailed;
    return states.IsInSync() ? kDone : kNotInSync;
}

}  // namespace

void RegisterStatus(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<StatusOptions>("status", "Tell the role and the state of each target", Status)
        .Flag("--changed", &StatusOptions::changed, "Only targets that are not in sync");
}

}  // namespace ZET::Cli
