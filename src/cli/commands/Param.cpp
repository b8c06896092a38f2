#include "cli/FileReport.h"
#include "cli/Lookup.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/ParamEdits.h"
#include "deploy/targets/EditRules.h"

namespace ZET::Cli {

namespace {

struct GivenParam : SectionOptions {
    std::string file;
    std::string name;
    std::string value;
};

int GetGivenParam(Session& session, const GivenParam& asked) {
    session.Out().Set("file", asked.file);
    session.Out().Set("path", nullptr);
    session.Out().Set("name", asked.name);
    session.Out().Set("section", nullptr);
    BeginLookup(session, "value");
    RequireParamName(asked.name);
    const std::optional<std::string> section = SectionOf(asked);
    if (section) session.Out().Set("section", *section);
    RequireSectionName(section);
    const std::string path = FileToShow(session, asked.file);
    return ReportLookup(session, path + ": " + Filled(_("has no parameter \"%s\""), {asked.name}), "value",
                        GetParam(session.Product(), path, asked.name, section));
}

int SetGivenParam(Session& session, const GivenParam& asked) {
    BeginFileReport(session);
    return ReportFile(session,
                      SetParam(session.Product(), asked.file, asked.name, asked.value, OptionsOf(asked)));
}

int UnsetGivenParam(Session& session, const GivenParam& asked) {
    BeginFileReport(session);
    return ReportFile(session, UnsetParam(session.Product(), asked.file, asked.name, OptionsOf(asked)));
}

int RestoreGivenParam(Session& session, const GivenParam& asked) {
    BeginFileReport(session);
    return ReportFile(session, RestoreParam(session.Product(), asked.file, asked.name, OptionsOf(asked)));
}

}  // namespace

void RegisterParam(CommandLine& line) {
    auto family = line.Family("param", "Look up and edit name=value parameters of a file", Subject::AnyFile);
    const auto add = [&family](const char* name, const char* help, auto run) {
        auto command = family.Add<GivenParam>(name, help, run);
        command("FILE", &GivenParam::file, "The file");
        command("NAME", &GivenParam::name, "What to look for");
        AddSection(command);
        return command;
    };
    add("get", "Print the value of a parameter", GetGivenParam);
    auto set = add("set", "Set a parameter", SetGivenParam);
    set.Text("VALUE", &GivenParam::value, "The new text");
    AddEditOptions(set);
    auto unset = add("unset", "Comment a parameter out", UnsetGivenParam);
    AddEditOptions(unset);
    auto restore = add("restore", "Bring back a parameter's former line", RestoreGivenParam);
    AddRestoreOptions(restore);
}

}  // namespace ZET::Cli
