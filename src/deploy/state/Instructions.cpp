#include "deploy/state/Instructions.h"

#include <unistd.h>

#include <vector>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

namespace {

std::optional<Problem> Check(const Paths& paths, const std::string& path) {
    const FoundFile found = paths.FindOpened(path);
    if (!found.status) return found.judge.ObjectionToOwn(found.path);
    // What is neither is told by whoever wants to read it.
    const bool isJudged = S_ISREG(found.status->st_mode) || S_ISDIR(found.status->st_mode);
    return isJudged ? found.judge.ObjectionToRead(found.path, *found.status) : std::nullopt;
}

}  // namespace

std::optional<Problem> CheckInstruction(HostProduct& product, const std::string& path) {
    return geteuid() == 0 ? Check(product.HostPaths(), path) : std::nullopt;
}

void RequireOwnInstruction(HostProduct& product, const std::string& path) {
    const std::optional<Problem> problem = CheckInstruction(product, path);
    if (problem) throw Failure(problem->Describe());
}

std::optional<Problem> CheckWayTo(const Paths& paths, const std::string& path) {
    if (geteuid() != 0) return std::nullopt;
    const FoundFile found = paths.FindOpened(path);
    return found.judge.ObjectionToOwn(found.path);
}

std::optional<Problem> CheckModule(HostProduct& product) {
    return geteuid() == 0 ? Check(product.ModulePaths(), product.ModuleFile()) : std::nullopt;
}

void RequireOwnInstructions(HostProduct& product) {
    std::vector<std::optional<Problem>> findings = {CheckModule(product)};
    for (const char* key : {"ZET_CFG", "ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"})
        findings.push_back(CheckInstruction(product, product.Param(key)));
    std::vector<std::string> all;
    for (const std::optional<Problem>& finding : findings) {
        if (finding) all.push_back(finding->Describe());
    }
    if (all.empty()) return;
    const std::string first = all.front();
    all.erase(all.begin());
    std::string others;
    for (const std::string& each : all)
        others += each + "\n";
    throw Failure(first, others);
}

}  // namespace ZET::Deploy
