#include "cli/FileReport.h"
#include "cli/Lookup.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/EditRules.h"
#include "deploy/edit/ParamEdits.h"

namespace ZET::Cli {

namespace {

struct ParamOptions : EditOptions {
    std::string file;
    std::string name;
    std::string value;
};

int Get(Session& session, const ParamOptions& asked) {
    RequireParamName(asked.name);
    session.Out().Set("file", asked.file);
    session.Out().Set("path", nullptr);
    session.Out().Set("name", asked.name);
    BeginLookup(session, "value");
    const std::string path = FileToShow(session, asked.file);
    return ReportLookup(session, path + ": " + Filled(_("has no parameter \"%s\""), {asked.name}), "value",
                        GetParam(session.Product(), path, asked.name));
}

int Set(Session& session, const ParamOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, SetParam(session.Product(), asked.file, asked.name, asked.value, asked));
}

int Restore(Session& session, const ParamOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, RestoreParam(session.Product(), asked.file, asked.name, asked));
}

}  // namespace

void RegisterParam(CommandLine& line) {
    auto family = line.Family("param", "Look up and edit name=value parameters of a file", Subject::AnyFile);
    const auto add = [&family](const char* name, const char* help, auto run) {
        auto command = family.Add<ParamOptions>(name, help, run);
        command("FILE", &ParamOptions::file, "The file");
        command("NAME", &ParamOptions::name, "What to look for");
        return command;
    };
    add("get", "Print the value of a parameter", Get);
    auto set = add("set", "Set a parameter", Set);
    set.Text("VALUE", &ParamOptions::value, "The new text");
    AddEditOptions(set);
    auto restore = add("restore", "Bring back a parameter's former line", Restore);
    AddRestoreOptions(restore);
}

}  // namespace ZET::Cli
