#include "deploy/state/Instructions.h"

#include <unistd.h>

#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/Installed.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

std::optional<Problem> Check(const FoundFile& found) {
    if (!found.status) return found.judge.ObjectionToOwn(found.path);
    // Anything else is reported by whoever wants to read it.
    const bool isJudged = S_ISREG(found.status->st_mode) || S_ISDIR(found.status->st_mode);
    return isJudged ? found.judge.ObjectionToRead(found.path, *found.status) : std::nullopt;
}

/// What was read in a directory no longer counts once another directory is used instead.
bool IsInForce(HostProduct& product, const std::string& file) {
    const std::string directory = product.Param("ZET_CFG_DIR");
    return IsBelow(file, directory) || IsBelow(file, product.Param("ZET_CFG_TEMPL_DIR")) ||
           IsBelow(file, product.FilePath(directory));
}

}  // namespace

std::optional<Problem> CheckInstruction(const Paths& paths, const std::string& path) {
    return geteuid() == 0 ? Check(paths.FindOpened(path)) : std::nullopt;
}

std::optional<Problem> CheckInstruction(const FoundFile& found) {
    return geteuid() == 0 ? Check(found) : std::nullopt;
}

void RequireOwnInstruction(const Paths& paths, const std::string& path) {
    const std::optional<Problem> problem = CheckInstruction(paths, path);
    if (problem) throw Failure(*problem);
}

std::optional<Problem> CheckWayTo(const Paths& paths, const std::string& path) {
    if (geteuid() != 0) return std::nullopt;
    const FoundFile found = paths.FindOpened(path);
    return found.judge.ObjectionToOwn(found.path);
}

std::optional<Problem> CheckModule(HostProduct& product) {
    return geteuid() == 0 && !HasBuiltInModule()
               ? Check(product.ModulePaths().FindOpened(product.ModuleFile()))
               : std::nullopt;
}

void RequireOwnInstructions(HostProduct& product) {
    std::vector<Problem> problems;
    const auto add = [&](const std::optional<Problem>& problem) {
        if (problem) problems.push_back(*problem);
    };
    add(CheckModule(product));
    for (const char* key : {"ZET_CFG", "ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"})
        add(CheckInstruction(product.HostPaths(), product.Param(key)));
    for (const std::string& file : product.Values().Files())
        if (IsInForce(product, file)) add(CheckInstruction(product.HostPaths(), file));
    TakeOutRepeats(problems);
    if (!problems.empty()) throw Failure(WithOthersBelow(problems));
}

void TakeOutRepeats(std::vector<Problem>& problems) {
    std::set<std::string> found;
    std::erase_if(problems, [&](const Problem& problem) { return !found.insert(problem.Describe()).second; });
}

}  // namespace ZET::Deploy
