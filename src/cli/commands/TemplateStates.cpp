#include "deploy/targets/TemplateStates.h"

#include <string>

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/TemplateCommands.h"
#include "deploy/host/FileState.h"
#include "deploy/targets/ShownDiff.h"

namespace ZET::Cli {

namespace {

/// The states of working copies as the library names them, marked for translation.
[[maybe_unused]] constexpr const char* kTemplateStates[] = {
    ZET_TEXT("current"), ZET_TEXT("newer shipped"), ZET_TEXT("edited, newer shipped"),
    ZET_TEXT("own"),     ZET_TEXT("not installed"), ZET_TEXT("not shipped")};

struct NamedTemplates {
    std::vector<std::string> names;
};

std::string RolesOf(const ListedTemplate& listed) {
    std::string text;
    for (const Role role : listed.roles)
        text += std::string(text.empty() ? "" : ", ") + RoleName(role);
    return text;
}

/// "/etc/x.toml:3, changed by /etc/y.toml"
std::string PlacesOf(const ListedTemplate& listed) {
    std::string text = Filled(_("in %s"), {listed.list + ":" + std::to_string(listed.line)});
    for (const std::string& list : listed.changedBy)
        text += ", " + Filled(_("changed by %s"), {list});
    return text;
}

int ListTemplates(Session& session, const NoWords&) {
    Report& out = session.Out();
    out.AddList("templates");
    for (const ListedTemplate& listed : ListTemplates(session.Product())) {
        out.Line(listed.name + ": " + listed.target + " (" + RolesOf(listed) + "), " +
                 (listed.isInstalled ? _("installed") : _("not installed")) + ", " + PlacesOf(listed) +
                 (listed.whyNot.empty() ? "" : ", " + Filled(_("not in force: %s"), {listed.whyNot})));
        List roles;
        for (const Role role : listed.roles)
            roles.emplace_back(NameOf(role));
        List changedBy;
        for (const std::string& list : listed.changedBy)
            changedBy.emplace_back(list);
        out.Add("templates", Fields{{"template", listed.name},
                                    {"target", listed.target},
                                    {"roles", std::move(roles)},
                                    {"working_copy", listed.workingCopy},
                                    {"installed", listed.isInstalled},
                                    {"in_force", listed.whyNot.empty()},
                                    {"reason", TextOrNull(listed.whyNot)},
                                    {"list", listed.list},
                                    {"line", listed.line},
                                    {"changed_by", std::move(changedBy)}});
    }
    return kDone;
}

Fields FieldsOf(const TemplateState& state) {
    return {{"template", state.name},
            {"working_copy", state.path},
            {"shipped", state.shipped},
            {"state", state.state}};
}

/// Reports a template that cannot be examined, which makes the command fail.
bool TellTrouble(Session& session, const TemplateState& state) {
    if (state.trouble.empty()) return false;
    session.Out().Error(state.name + ": " + Filled(_("its state cannot be told: %s"), {state.trouble}));
    return true;
}

int TellStates(Session& session, const NamedTemplates& asked) {
    session.Out().AddList("templates");
    bool isAnyTrouble = false;
    bool isAnyNewer = false;
    for (const TemplateState& state : TemplateStates(session.Product(), asked.names)) {
        isAnyTrouble = TellTrouble(session, state) || isAnyTrouble;
        isAnyNewer = isAnyNewer || state.hasNewer;
        session.Out().Line(state.path + ": " + _(state.state.c_str()));
        session.Out().Add("templates", FieldsOf(state));
    }
    if (isAnyTrouble) return kFailed;
    return isAnyNewer ? kNotInSync : kDone;
}

/// Reports what would change if the shipped template replaced the working copy.
void TellDifference(Session& session, const TemplateState& state) {
    Deployment& product = session.Product();
    const ShownDiff diff = DiffToShow(product, state.path, state.shipped, state.path);
    const FileState copy = StateOf(state.path);
    FileState shipped = copy;  // the working copy keeps its owner
    shipped.mode = StateOf(state.shipped).mode;
    if (const std::string change = DescribeChange(copy, shipped); !change.empty())
        session.Out().Line(state.path + ": " + change);
    TellDiff(session.Out(), diff);
    Fields fields = FieldsOf(state);
    fields.emplace_back("mode_before", ModeText(copy));
    fields.emplace_back("mode_after", ModeText(shipped));
    fields.emplace_back("secret", diff.isPrivate);
    AddDiff(fields, diff);
    session.Out().Add("templates", std::move(fields));
}

int Diff(Session& session, const NamedTemplates& asked) {
    session.Out().AddList("templates");
    session.Wanted().wantsDiffs = true;
    bool isAnyTrouble = false;
    for (const TemplateState& state : TemplateStates(session.Product(), asked.names)) {
        if (TellTrouble(session, state)) {
            isAnyTrouble = true;
        } else if (StateOf(state.path).exists && StateOf(state.shipped).exists) {
            TellDifference(session, state);
        } else if (!asked.names.empty()) {
            session.Out().Remark(state.path + ": " + _("there is nothing to compare"));
        }
    }
    return isAnyTrouble ? kFailed : kDone;
}

}  // namespace

void AddTemplateStates(CommandFamily& family) {
    family.Add<NoWords>("list", "List the templates, their targets and roles", ListTemplates);
    family
        .Add<NamedTemplates>("status", "Tell which working copies are edited, and what is newer", TellStates)
        .Any("NAME", &NamedTemplates::names, "Only these templates");
    family.Add<NamedTemplates>("diff", "Show how the shipped templates differ from the working copies", Diff)
        .Any("NAME", &NamedTemplates::names, "Only these templates");
}

}  // namespace ZET::Cli
