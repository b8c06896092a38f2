#include "deploy/edit/OptionEdits.h"

#include <algorithm>
#include <exception>
#include <new>
#include <vector>

#include "deploy/edit/Edits.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/SoundBlocks.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnDirectories.h"
#include "deploy/targets/EditRules.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kConfigFile[] = "ZET_CFG";
constexpr char kLanguage[] = "ZET_LANG";

[[noreturn]] void FailToSet(const Failure& failure) {
    throw Failure(Words("the option would break the configuration file: %s", failure.what()), failure.Facts(),
                  failure.ErrorNumber());
}

/// What is wrong with a copy of the file, as if it were wrong with the file itself.
Failure ToldOf(const std::string& path, const std::string& copy, const Failure& failure) {
    std::string words = failure.what();
    const std::size_t place = words.find(copy);
    if (place != std::string::npos) words.replace(place, copy.size(), path);
    Problem facts = failure.Facts();
    facts.file = path;
    return Failure(words, facts, failure.ErrorNumber());
}

/// The file must be one that the next run of a command can read.
void RequireParameterFile(const std::string& staged, const std::string& path) {
    const QuietLog quiet(ZETLogError);
    try {
        const CZETHost host(staged);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        FailToSet(ToldOf(path, staged, FailureOf(error)));
    }
}

bool IsAnythingCommitted(Deployment& product) {
    Store* const store = product.HostHistory().ToLookIfUsable();
    if (store == nullptr) return false;
    const std::vector<KnownFile> known = store->KnownFiles();
    return std::any_of(known.begin(), known.end(),
                       [](const KnownFile& file) { return !file.state.knowledge.roles.empty(); });
}

/// What is committed is known in them.
void RequireLastingDirectory(Deployment& product, const std::string& name, const std::string& value) {
    if (!IsOwnDirectory(name) || product.HostPaths().NameInside(product.Param(name)) == value) return;
    if (!IsAnythingCommitted(product)) return;
    throw Failure({.file = product.Param(kConfigFile),
                   .text = CannotMove(name),
                   .remedy = _("\"rollback-config\" of both roles first, and commit again afterwards")});
}

}  // namespace

std::optional<std::string> GetOption(Deployment& product, const std::string& name) {
    RequireOptionName(name, "NAME");
    // Asking the core for a parameter does not tell an unknown one from an empty one.
    const StringMap params = product.Values().Params();
    const auto found = params.find(name);
    return found == params.end() ? std::nullopt : std::optional<std::string>(found->second);
}

FileOutcome SetOption(Deployment& product, const std::string& name, const std::string& value) {
    RequireOptionName(name, "NAME");
    RequireOneLine(value, "VALUE");
    if (name == kConfigFile)
        throw UsageError(_("ZET_CFG is always the file that is read (name another one with --config)"));
    if (const auto problem = ProblemOfParam(name, value))
        FailToSet(Failure({.text = problem->text, .remedy = problem->remedy}));
    RequireLastingDirectory(product, name, value);
    const std::string file = product.Param(kConfigFile);
    // None of the system's own text gets into this file, so that a language that the host does not have can
    // be set right.
    const ParamOverride language(product.Core(), kLanguage, "C");
    FileEdit edit(product, product.ConfigFile(), FileInPlace::Access::ByPath);
    LookAtBlocks(product, {product.ConfigFile(), edit.Path()});
    const auto set = [&](const std::string& path) {
        if (path != file) {
            // The trial: what the module does to its own file, done to the copy.
            const auto copy = OpenedFile(product, path, true);
            copy->SetParamValue(name, value);
            SaveEdited(*copy);
            return;
        }
        const bool isRead = RemedyErrors(kRemedyOfSaving,
                                         [&] { return product.Config().UpdateConfigFileParam(name, value); });
        if (!isRead)
            throw Failure(
                {.file = file, .text = _("cannot be read any more"), .remedy = _("run the command again")});
    };
    FileOutcome outcome =
        edit.Make(set, true, [&](const std::string& staged) { RequireParameterFile(staged, edit.Path()); });
    if (const auto below = product.Values().SourceBelowMain(name))
        product.Out().Remark(
            Words("%s of %s:%s does not count any more", name, below->file, std::to_string(below->line)));
    return outcome;
}

}  // namespace ZET::Deploy
