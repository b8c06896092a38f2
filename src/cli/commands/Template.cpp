#include <algorithm>

#include "cli/Assignments.h"
#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "cli/commands/TemplateCommands.h"
#include "deploy/host/Failure.h"
#include "deploy/targets/TemplateFiles.h"
#include "deploy/targets/Templates.h"

namespace ZET::Cli {

namespace {

constexpr char kStandardOutput[] = "-";

struct InstallOptions {
    std::vector<std::string> names;
    bool force = false;
};

struct ProcessOptions {
    std::string name;
    std::string target;
    std::vector<std::string> values;
    bool force = false;
};

/// The caller's own values by placeholder.
StringMap ExtraValues(const std::vector<std::string>& assignments) {
    StringMap values;
    for (const auto& [name, value] : ParseAssignments(assignments, "--value")) {
        if (name.find_first_of("${}") != std::string::npos)
            throw UsageError(
                "--value: " +
                Filled(_("\"%s\" is no name of a placeholder (write it without \"${}\")"), {name}));
        values["${" + name + "}"] = value;
    }
    return values;
}

/// Prints the rendered template; writes no file.
int PrintRendering(Session& session, const Rendering& rendering) {
    Deployment& product = session.Product();
    if (TellProblems(session, CheckRendering(product, rendering))) return kFailed;
    const std::string source = TemplateFile(product, rendering.templateName);
    session.Out().Set("secret", product.HostSecrets().IsPrivate(source));
    product.HostSecrets().RequireShown(source);
    const std::string text = RenderedText(product, rendering);
    session.Out().Set("text", text);
    session.Out().Text(text);
    return kDone;
}

int Install(Session& session, const InstallOptions& asked) {
    BeginFileReport(session);
    session.TellFilesBy(TellFile);
    const bool isAnyChange = InstallTemplates(session.Product(), asked.names, asked.force);
    return StatusAfter(session, isAnyChange);
}

int Process(Session& session, const ProcessOptions& asked) {
    BeginFileReport(session);
    session.Out().Set("secret", nullptr);  // until there is something to print
    session.Out().Set("text", nullptr);
    session.Out().AddList("problems");
    RequireTemplateName(asked.name);
    if (asked.target.empty()) throw UsageError(_("TARGET is empty (name a file)"));
    const Rendering rendering{asked.name, ExtraValues(asked.values)};
    if (asked.target == kStandardOutput) return PrintRendering(session, rendering);
    TemplateProcess process(session.Product(), rendering, asked.target, asked.force);
    if (TellRefusal(session, CheckRendering(session.Product(), rendering))) return kFailed;
    int status = kDone;
    for (const FileOutcome& outcome : process.Run())
        status = std::max(status, ReportFile(session, outcome));
    return status;
}

}  // namespace

void RegisterTemplate(CommandLine& line) {
    auto family = line.Family("template", "Work on single templates", Subject::Product);
    AddTemplateStates(family);
    family.Add<InstallOptions>("install", "Install the working copy of a template", Install)
        .Some("NAME", &InstallOptions::names, "The templates")
        .Flag("--force", &InstallOptions::force, "Over a differing one, which is kept as NAME.old");
    family
        .Add<ProcessOptions>("process", "Render one template into a file", Process)(
            "NAME", &ProcessOptions::name, "The template")("TARGET", &ProcessOptions::target,
                                                           "The file, or - for standard output")
        .Assignments("--value", &ProcessOptions::values,
                     "Another value for this run (NAME of the placeholder)")
        .Flag("--force", &ProcessOptions::force, kForceHelp);
    AddTemplateUpgrade(family);
}

}  // namespace ZET::Cli
