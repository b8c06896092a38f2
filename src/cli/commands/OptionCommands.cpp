#include <exception>
#include <new>
#include <optional>

#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/edit/EditRules.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/FileChange.h"
#include "deploy/host/Remedy.h"
#include "deploy/targets/Secrets.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

constexpr char kConfigFile[] = "ZET_CFG";
constexpr char kLanguage[] = "ZET_LANG";

/// The file must be one that the next run of a command can read.
void RequireParameterFile(Session& session, const std::string& staged, const std::string& path) {
    const QuietLog quiet(session.Asked(), ZETLogError);
    try {
        CZETHost host(staged);
        RequireDirectories(host.GetCore(), staged);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        std::string text = error.what();
        const std::size_t place = text.find(staged);
        if (place != std::string::npos) text.replace(place, staged.size(), path);
        throw Failure("the option would break the configuration file: " + text);
    }
}

}  // namespace

int RunOptionGet(Session& session) {
    const std::string& name = session.Asked().name;
    RequireOptionName(name, "NAME");
    std::optional<std::string> value;
    // Asking the core for a parameter does not tell an unknown one from an empty one.
    const StringMap params = session.Params();
    if (const auto found = params.find(name); found != params.end()) value = found->second;
    session.Out().Set("name", name);
    session.Out().Set("secret", session.HostSecrets().IsPrivate(session.Param(kConfigFile)));
    return ReportLookup(session, "there is no parameter \"" + name + "\"", "value", value);
}

int RunOptionSet(Session& session) {
    const Request& asked = session.Asked();
    RequireOptionName(asked.name, "NAME");
    RequireOneLine(asked.text, "VALUE");
    if (asked.name == kConfigFile)
        throw UsageError("ZET_CFG is always the file that is read (name another one with --config)");
    if (asked.name == kLanguage) RequireLanguage(asked.text);
    if (const std::string problem = ProblemOfParam(asked.name, asked.text); !problem.empty())
        throw Failure("the option would break the configuration file: " + problem);
    const std::string file = session.Param(kConfigFile);
    // None of the system's own text gets into this file, so that a language that the host does not have can
    // be set right.
    const ParamOverride language(session.Core(), kLanguage, "C");
    FileChange change(session, asked.configFile, FileInPlace::Access::ByPath);
    const auto set = [&](const std::string& path) {
        if (path != file) {
            // The trial: what the module does to its own file, done to the copy.
            const auto copy = OpenedFile(session, path, true);
            copy->SetParamValue(asked.name, asked.text);
            SaveEdited(*copy);
            return;
        }
        const bool isRead = RemedyErrors(
            kRemedyOfSaving, [&] { return session.Config().UpdateConfigFileParam(asked.name, asked.text); });
        if (!isRead) throw Failure(file + ": cannot be read any more (run the command again)");
    };
    return change.Make(
        set, true, [&](const std::string& staged) { RequireParameterFile(session, staged, change.Path()); });
}

}  // namespace ZET
