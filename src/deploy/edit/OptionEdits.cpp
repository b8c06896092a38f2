#include "deploy/edit/OptionEdits.h"

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <string_view>
#include <vector>

#include "deploy/edit/Edits.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/SoundBlocks.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/ConfFile.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnDirectories.h"
#include "deploy/state/OwnText.h"
#include "deploy/targets/Assumptions.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/PlaceCheck.h"
#include "deploy/targets/RememberedLines.h"
#include "deploy/targets/UnknownNames.h"
#include "text/Lines.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kConfigFile[] = "ZET_CFG";
constexpr char kLanguage[] = "ZET_LANG";
constexpr char kHistory[] = "ZET_HISTORY";
constexpr char kStateDirectory[] = "ZET_VAR_LIB_DIR";

[[noreturn]] void FailToSet(const Failure& failure) {
    throw Failure(Words("the option would break the configuration file: %s", failure.what()), failure.Facts(),
                  failure.ErrorNumber());
}

/// The failure with a copy of the file, as if it were one with the file itself.
Failure ToldOf(const std::string& path, const std::string& copy, const Failure& failure) {
    std::string words = failure.what();
    const std::size_t place = words.find(copy);
    if (place != std::string::npos) words.replace(place, copy.size(), path);
    Problem facts = failure.Facts();
    facts.file = path;
    return Failure(words, facts, failure.ErrorNumber());
}

/// Requires that the next run of a command can read the file.
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

bool IsCommitted(Store& store, const KnownFile& file) {
    return !CommittersOf(store, file.kind, file.state.knowledge).empty();
}

/// What is committed is known in the product's directories, and what is edited in place in the state
/// directory, so they must not move then.
void RequireLastingDirectory(Deployment& product, const std::string& name, const std::string& value) {
    if (!IsOwnDirectory(name) || product.HostPaths().NameInside(product.Param(name)) == value) return;
    Store* const store = product.HostHistory().ToLookIfUsable();
    if (store == nullptr) return;
    const std::string file = product.Param(kConfigFile);
    const std::vector<KnownFile> known = store->KnownFiles();
    if (std::any_of(known.begin(), known.end(), [&](const auto& each) { return IsCommitted(*store, each); }))
        throw Failure({.file = file,
                       .text = CannotMove(name),
                       .remedy = _("\"rollback-config\" of both roles first, and commit again afterwards")});
    if (name != kStateDirectory) return;
    if (std::any_of(known.begin(), known.end(), [](const auto& each) { return each.kind == FileKind::Edit; }))
        throw Failure(
            {.file = file,
             .text =
                 Words("%s cannot be changed while files are edited in place, which is known there", name),
             .remedy = _("\"rollback-config\" first, and edit them again afterwards")});
}

void RequireChangeable(const std::string& name) {
    RequireOptionName(name, "NAME");
    if (name == kConfigFile)
        throw UsageError(_("ZET_CFG is always the file that is read (name another one with --config)"));
}

/// Refuses beforehand what a check would say against the line.
void RequireSoundLine(Deployment& product, const std::string& name, const std::string& value) {
    if (const auto problem = ProblemOfValue(name, value)) FailToSet(Failure(*problem));
    if (const auto problem = product.Values().ProblemOfName(name)) FailToSet(Failure(*problem));
    const UnusedParameters judged = JudgeName(product, name);
    if (!judged.mistyped.empty()) FailToSet(Failure(judged.mistyped.front()));
}

void RequireValueForTemplates(Deployment& product, const std::string& name, const std::string& value) {
    if (name.starts_with("ZET_")) return;
    if (const auto problem = ProblemInTemplates(product, name, value)) FailToSet(Failure(*problem));
}

/// Refuses beforehand what a check would say against the directory.
void RequireSoundDirectory(Deployment& product, const std::string& name, const std::string& value) {
    const Paths& paths = product.HostPaths();
    if (!IsOwnDirectory(name) || paths.NameInside(product.Param(name)) == value) return;
    std::vector<Problem> problems = CheckOwnDirectory(paths, name, product.FilePath(value));
    std::erase_if(problems, [](const Problem& problem) { return problem.isOfUser; });
    if (!problems.empty()) FailToSet(Failure(problems.front()));
}

/// Lets root leave a directory on which root cannot rely: the next one already serves this edit.
void LeaveUnsafeDirectory(Deployment& product, const std::string& name, const std::string& next) {
    if (IsOwnDirectory(name) && CheckInstruction(product.HostPaths(), product.Param(name)))
        product.UpdateParam(name, next);
}

/// What an edit makes of a parameter.
struct OptionEdit {
    const std::string& name;
    std::optional<std::string> value;  ///< the one that counts then; none: the same
    FileEdit::Operation operation;
};

FileOutcome EditMainFile(Deployment& product, const OptionEdit& option) {
    // No text of the system's own gets into this file, so an edit can also correct a language that the host
    // does not have.
    const ParamOverride language(product.Core(), kLanguage, "C");
    FileEdit edit(product, product.ConfigFile(), FileInPlace::Access::ByPath);
    // Another run may have committed something before this one got the lock.
    if (option.value) RequireLastingDirectory(product, option.name, *option.value);
    LookAtBlocks(product, {product.ConfigFile(), edit.Path()});
    return edit.Make(option.operation, true,
                     [&](const std::string& staged) { RequireParameterFile(staged, edit.Path()); });
}

/// True if the store, or a library that it needs, failed. Only a library is named without a directory.
bool IsOfHistory(Deployment& product, const Failure& failure) {
    const std::string& file = failure.Facts().file;
    return product.HostHistory().IsOfStore(failure) || (!file.empty() && file.find('/') == std::string::npos);
}

/// An unusable history keeps all other edits from being made, and this one is the way out.
FileOutcome EditToEndHistory(Deployment& product, const OptionEdit& option) {
    std::string reason;
    try {
        return EditMainFile(product, option);
    } catch (const Failure& failure) {
        if (!IsOfHistory(product, failure)) throw;
        reason = failure.what();
    }
    const ParamOverride none(product.Core(), kHistory, "no");
    FileOutcome outcome = EditMainFile(product, option);
    product.Out().Warning(Words("what is changed is not recorded: %s", reason));
    return outcome;
}

void SetLines(Deployment& product, const std::string& path, const std::string& name,
              const std::string& value) {
    const std::string file = product.Param(kConfigFile);
    if (path != file) {
        // A dry run does to the copy what the module does to its own file.
        const auto copy = OpenedFile(product, path, true);
        copy->SetParamValue(name, value);
        SaveEdited(*copy);
        return;
    }
    const bool isRead =
        RemedyErrors(kRemedyOfSaving, [&] { return product.Config().UpdateConfigFileParam(name, value); });
    if (!isRead)
        throw Failure(
            {.file = file, .text = _("cannot be read any more"), .remedy = _("run the command again")});
    product.UpdateParam(name, value);  // the module does not know the root directory
}

std::string WithoutLines(std::string_view text, const std::string& name) {
    std::string rest;
    while (!text.empty()) {
        const std::string_view before = text;
        Text::TakeLine(text);
        const std::string_view line = before.substr(0, before.size() - text.size());
        const std::vector<GivenParameter> given = ReadConfText("", line).given;
        if (given.empty() || given.front().name != name) rest += line;
    }
    return rest;
}

}  // namespace

std::optional<std::string> GetOption(Deployment& product, const std::string& name) {
    RequireOptionName(name, "NAME");
    // The core does not tell an unknown parameter from an empty one.
    const StringMap params = product.Values().Params();
    const auto found = params.find(name);
    return found == params.end() ? std::nullopt : std::optional<std::string>(found->second);
}

FileOutcome SetOption(Deployment& product, const std::string& name, const std::string& value) {
    RequireChangeable(name);
    RequireOneLine(value, "VALUE");
    RequireSoundLine(product, name, value);
    RequireLastingDirectory(product, name, value);
    RequireSoundDirectory(product, name, value);
    RequireValueForTemplates(product, name, value);
    LeaveUnsafeDirectory(product, name, value);
    const OptionEdit edit{name, value,
                          [&](const std::string& path) { SetLines(product, path, name, value); }};
    const bool endsHistory = name == kHistory && !FlagOfParam(name, value).value_or(true);
    FileOutcome outcome = endsHistory ? EditToEndHistory(product, edit) : EditMainFile(product, edit);
    if (const auto below = product.Values().GivenBelowMain(name))
        product.Out().Remark(
            Words("%s of %s:%s does not count any more", name, below->file, std::to_string(below->line)));
    return outcome;
}

FileOutcome UnsetOption(Deployment& product, const std::string& name) {
    RequireChangeable(name);
    const std::optional<GivenParameter> below = product.Values().GivenBelowMain(name);
    const std::vector<GivenParameter>& given = product.Values().GivenByMain();
    std::optional<std::string> next;
    if (FindGiven(given, name) != nullptr) {
        const auto known = KnownParameter(name);
        next = below ? below->value : known ? known->value : "";
        RequireLastingDirectory(product, name, *next);
        LeaveUnsafeDirectory(product, name, *next);
    }
    const auto unset = [&](const std::string& path) {
        SaveOwnText(path, WithoutLines(ReadFileBytes(path), name), ModeOf(path));
    };
    FileOutcome outcome = EditMainFile(product, {name, next, unset});
    if (below)
        product.Out().Remark(Words("%s of %s:%s counts now", name, below->file, std::to_string(below->line)));
    return outcome;
}

}  // namespace ZET::Deploy
