#include "cli/FileReport.h"
#include "cli/Lookup.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/LineEdits.h"
#include "deploy/targets/EditRules.h"

namespace ZET::Cli {

namespace {

struct LineOptions : SectionOptions {
    std::string file;
    std::string pattern;
    std::string line;
};

int GetGivenLine(Session& session, const LineOptions& asked) {
    session.Out().Set("file", asked.file);
    session.Out().Set("path", nullptr);
    session.Out().Set("pattern", asked.pattern);
    session.Out().Set("section", nullptr);
    BeginLookup(session, "line");
    const std::optional<std::string> section = SectionOf(asked);
    if (section) session.Out().Set("section", *section);
    RequireSectionName(section);
    RequirePattern(session.Product().Core(), asked.pattern);
    const std::string path = FileToShow(session, asked.file);
    return ReportLookup(session, path + ": " + Filled(_("has no line with \"%s\""), {asked.pattern}), "line",
                        GetLine(session.Product(), path, asked.pattern, section));
}

int SetGivenLine(Session& session, const LineOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session,
                      SetLine(session.Product(), asked.file, asked.pattern, asked.line, OptionsOf(asked)));
}

int RestoreGivenLine(Session& session, const LineOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, RestoreLine(session.Product(), asked.file, asked.pattern, OptionsOf(asked)));
}

}  // namespace

void RegisterLine(CommandLine& line) {
    auto family =
        line.Family("line", "Look up and edit lines of a file by a regular expression", Subject::AnyFile);
    const auto add = [&family](const char* name, const char* help, auto run) {
        auto command = family.Add<LineOptions>(name, help, run);
        command("FILE", &LineOptions::file, "The file");
        command.Text("PATTERN", &LineOptions::pattern, "What to look for");
        AddSection(command);
        return command;
    };
    add("get", "Print the first line that matches", GetGivenLine);
    auto set = add("set", "Set every line that matches", SetGivenLine);
    set.Text("LINE", &LineOptions::line, "The new text");
    AddEditOptions(set);
    auto restore = add("restore", "Bring back former lines that match", RestoreGivenLine);
    AddRestoreOptions(restore);
}

}  // namespace ZET::Cli
