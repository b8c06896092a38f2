#include <optional>

#include "Commands.h"
#include "EditRules.h"
#include "Edits.h"
#include "ExitStatus.h"
#include "FileChange.h"
#include "TextStreams.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

constexpr char kNameBytes[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789";
constexpr char kConfigFile[] = "ZET_CFG";

/// The core's time of writing its status, which looks like a parameter there.
constexpr char kStatusTime[] = "COMMIT_TIME";

void RequireOptionName(const std::string& name) {
    if (name.empty() || name.find_first_not_of(kNameBytes) != std::string::npos ||
        (name.front() >= '0' && name.front() <= '9')) {
        throw UsageError("NAME \"" + name +
                         "\" is no name of a parameter (use letters, digits and \"_\", no digit first)");
    }
}

/// Asking the core for a parameter does not tell an unknown one from an empty one; its status has all.
bool IsKnown(Session& session, const std::string& name) {
    TextWriter status;
    session.Core().WriteStatus(status);
    const bool isListed = ("\n" + status.str()).find("\n" + name + "=") != std::string::npos;
    return isListed && (name != kStatusTime || !session.Param(name).empty());
}

/// The file must be one that the next run of a command can read.
void RequireParameterFile(Session& session, const std::string& staged, const std::string& path) {
    const QuietLog quiet(session.Asked(), ZETLogError);
    try {
        const CZETHost host(staged);
    } catch (const EZETError& error) {
        std::string text = error.what();
        const std::size_t place = text.find(staged);
        if (place != std::string::npos) text.replace(place, staged.size(), path);
        throw Failure("the option would break the configuration file: " + text);
    }
}

}  // namespace

int RunOptionGet(Session& session) {
    const std::string& name = session.Asked().name;
    RequireOptionName(name);
    std::optional<std::string> value;
    if (IsKnown(session, name)) value = session.Param(name);
    session.Out().Set("name", name);
    return ReportLookup(session, "there is no parameter \"" + name + "\"", "value", value);
}

int RunOptionSet(Session& session) {
    const Request& asked = session.Asked();
    RequireOptionName(asked.name);
    RequireOneLine(asked.text, "VALUE");
    if (asked.name == kConfigFile)
        throw UsageError("ZET_CFG is always the file that is read (name another one with --config)");
    const std::string file = session.Param(kConfigFile);
    FileChange change(session, asked.configFile);
    const auto set = [&](const std::string& path) {
        if (path != file) {
            // The trial: what the module does to its own file, done to the copy.
            const auto copy = OpenedFile(session, path, true);
            copy->SetParamValue(asked.name, asked.text);
            copy->Save(true);
        } else if (!session.Config().UpdateConfigFileParam(asked.name, asked.text)) {
            throw Failure(file + ": cannot be read any more (run the command again)");
        }
    };
    return change.Make(
        set, true, [&](const std::string& staged) { RequireParameterFile(session, staged, change.Path()); });
}

}  // namespace ZET
