#include "deploy/targets/EditedTargets.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

namespace {

/// One list may serve hosts of either role, so the other role counts only if it has committed here.
bool IsOtherRoleHere(Deployment& product) {
    return product.HasCommitted(OtherRole(product.Role()));
}

}  // namespace

const Target* TargetAt(Deployment& product, const std::string& path) {
    const Target* const target = product.Lists().TargetOf(path);
    return target != nullptr && target->IsInForceFor(product.Role()) ? target : nullptr;
}

const Target* TargetOfAnyAt(Deployment& product, const std::string& path) {
    const Target* const target = product.Lists().TargetOf(path);
    if (target == nullptr || !target->IsInForce()) return nullptr;
    return target->IsFor(product.Role()) || IsOtherRoleHere(product) ? target : nullptr;
}

Problem ProblemOfTarget(const ListedEdit& edit, const Target& target) {
    return {.file = edit.file,
            .line = edit.line,
            .text = edit.path + ": " + Words("is made from [%s]", target.templateName),
            .remedy = _("put the line into the template")};
}

std::vector<Problem> EditsOfTargets(Deployment& product, const std::vector<std::string>& templateNames) {
    std::vector<Problem> problems;
    const auto isNamed = [&](const Target& target) {
        return templateNames.empty() || std::find(templateNames.begin(), templateNames.end(),
                                                  target.templateName) != templateNames.end();
    };
    const std::vector<ListedEdit>& edits = product.Lists().Targets().edits;
    const bool areOthersTold = !edits.empty() && IsOtherRoleHere(product);
    for (const ListedEdit& edit : edits) {
        if (!edit.IsInForce() || edit.path.empty()) continue;
        if (edit.IsFor(product.Role()) ? templateNames.empty() : !areOthersTold) continue;
        try {
            const Target* const target = TargetAt(product, product.FilePath(edit.path));
            if (target != nullptr && isNamed(*target)) problems.push_back(ProblemOfTarget(edit, *target));
        } catch (const Failure&) {
            continue;  // no path leads to it
        }
    }
    return problems;
}

}  // namespace ZET::Deploy
