#include "cli/FileReport.h"
#include "cli/Lookup.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/ParamEdits.h"
#include "deploy/targets/EditRules.h"
#include "zet/deploy/Failure.h"

namespace ZET::Cli {

namespace {

struct GivenParam : EditOptions {
    std::string file;
    std::string name;
    std::string value;
    bool isBeforeSections = false;
};

/// As the library takes it. An empty word is one that somebody forgot to fill in.
std::optional<std::string> SectionOf(const GivenParam& asked) {
    if (!asked.section) return asked.isBeforeSections ? std::optional<std::string>("") : std::nullopt;
    if (asked.isBeforeSections)
        throw UsageError(_("--section and --no-section are given (leave one of them out)"));
    if (asked.section->empty())
        throw UsageError(_("SECTION is empty (--no-section is for the lines before the first one)"));
    return asked.section;
}

EditOptions OptionsOf(const GivenParam& asked) {
    EditOptions options = asked;
    options.section = SectionOf(asked);
    return options;
}

int Get(Session& session, const GivenParam& asked) {
    RequireParamName(asked.name);
    const std::optional<std::string> section = SectionOf(asked);
    RequireSectionName(section);
    session.Out().Set("file", asked.file);
    session.Out().Set("path", nullptr);
    session.Out().Set("name", asked.name);
    session.Out().Set("section", section ? Value(*section) : Value(nullptr));
    BeginLookup(session, "value");
    const std::string path = FileToShow(session, asked.file);
    return ReportLookup(session, path + ": " + Filled(_("has no parameter \"%s\""), {asked.name}), "value",
                        GetParam(session.Product(), path, asked.name, section));
}

int Set(Session& session, const GivenParam& asked) {
    BeginFileReport(session);
    return ReportFile(session,
                      SetParam(session.Product(), asked.file, asked.name, asked.value, OptionsOf(asked)));
}

int Unset(Session& session, const GivenParam& asked) {
    BeginFileReport(session);
    return ReportFile(session, UnsetParam(session.Product(), asked.file, asked.name, OptionsOf(asked)));
}

int Restore(Session& session, const GivenParam& asked) {
    BeginFileReport(session);
    return ReportFile(session, RestoreParam(session.Product(), asked.file, asked.name, OptionsOf(asked)));
}

void AddSection(Command<GivenParam>& command) {
    command.Option("--section", "SECTION", &EditOptions::section, "Only below the line [SECTION]");
    command.Flag("--no-section", &GivenParam::isBeforeSections, "Only before the first section");
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
    add("get", "Print the value of a parameter", Get);
    auto set = add("set", "Set a parameter", Set);
    set.Text("VALUE", &GivenParam::value, "The new text");
    AddEditOptions(set);
    auto unset = add("unset", "Comment a parameter out", Unset);
    AddEditOptions(unset);
    auto restore = add("restore", "Bring back a parameter's former line", Restore);
    AddRestoreOptions(restore);
}

}  // namespace ZET::Cli
