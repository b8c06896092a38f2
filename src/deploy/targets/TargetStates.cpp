#include "deploy/targets/TargetStates.h"

#include <algorithm>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/state/StateFile.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/Targets.h"

namespace ZET::Deploy {

namespace {

constexpr char kInSync[] = "in sync";
constexpr char kUnknown[] = "unknown";

/// A `Failure` when this user cannot read the template that is there: what a commit would make of it is then
/// unknown.
void RequireReadableTemplate(Host& host, const std::string& templateName) {
    const std::string file = RemedyErrors("", [&] { return TemplateFile(host, templateName); });
    if (!file.empty() && host.HostPaths().StaysInside(file)) RequireReadableFile(file);
}

/// Renders the target as a commit would. One that cannot be rendered is not what was committed, which a
/// commit would have to tell.
std::string StateOfTarget(Deployment& product, const Staging& staging, const Manifest& manifest,
                          const std::string& templateName, const std::string& path) {
    if (!manifest.Has(path)) return "not committed";
    const FileState now = StateOf(path);
    if (!now.exists) return "missing";
    const bool isUntouched = manifest.IsUntouched(path);
    RequireReadableTemplate(product, templateName);
    if (!CheckTemplateFile(product, templateName, product.Config().TemplatesValues()).empty()) {
        return isUntouched ? "pending" : "edited";
    }
    const std::string staged = RenderQuietly(product, staging, templateName);
    if (HaveSameModeAndBytes(staged, path)) return kInSync;
    return isUntouched ? "pending" : "edited";
}

TargetState StateOfListed(Deployment& product, const Staging& staging, const Manifest& manifest,
                          const Target& target) {
    TargetState result{target.templateName, product.HostPaths().FromInside(target.path), kUnknown, "",
                       target.path};
    try {
        result.path = product.HostPaths().WithRealDirectory(product.FilePath(target.path));
        result.state = StateOfTarget(product, staging, manifest, target.templateName, result.path);
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        result.trouble = failure.what();
    }
    return result;
}

}  // namespace

RoleStatus RoleStatusOf(HostProduct& product) {
    RoleStatus result;
    StringMap status;
    const StateDirectory state = product.State();
    const char* const role = NameOf(product.Role());
    HasStateFile(state.Status(product.Role()));  // what is none is told
    if (product.Config().IsConfigStatusExist(role)) product.Config().LoadConfigStatus(role, status);
    result.commitTime = status["COMMIT_TIME"];
    if (product.Role() != Role::Client) return result;
    HasStateFile(state.FileServerStatus());
    result.fileServer = product.Config().GetFileServerStatus();
    return result;
}

TargetStates StatesOfTargets(Deployment& product) {
    TargetStates result;
    const Manifest manifest(product.State(), product.Role(), product.HostPaths());
    const Staging staging;
    std::set<std::string> listed;
    const std::vector<Target> targets = SelectTargets(product, {});
    for (const Target& target : targets) {
        product.RequireGoOn();
        product.Out().Progress(result.targets.size(), targets.size());
        result.targets.push_back(StateOfListed(product, staging, manifest, target));
        listed.insert(result.targets.back().path);
    }
    for (const std::string& path : manifest.Paths()) {
        if (listed.count(path) == 0) result.leftOvers.push_back(path);
    }
    return result;
}

bool TargetStates::IsAnyUnknown() const {
    return std::any_of(targets.begin(), targets.end(),
                       [](const TargetState& target) { return target.state == kUnknown; });
}

bool TargetStates::IsInSync() const {
    return std::all_of(targets.begin(), targets.end(),
                       [](const TargetState& target) { return target.state == kInSync; });
}

}  // namespace ZET::Deploy
