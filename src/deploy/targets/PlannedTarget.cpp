#include "deploy/targets/PlannedTarget.h"

#include <cstddef>
#include <utility>

#include "deploy/host/UnifiedDiff.h"
#include "deploy/targets/ShownDiff.h"

namespace ZET::Deploy {

namespace {

FileOutcome OutcomeWithoutDiff(const PlannedTarget& planned) {
    FileOutcome outcome;
    outcome.file = planned.target.path;
    outcome.path = planned.path;
    outcome.result = planned.change;
    outcome.before = planned.before;
    outcome.after = planned.after;
    outcome.templateName = planned.target.templateName;
    outcome.isEdited = planned.IsOthersWork();
    outcome.isMerged = planned.isMerged || planned.rendering != nullptr;
    return outcome;
}

/// A failed comparison is reported, and keeps nothing from being shown or done.
ShownDiff DiffIfAny(Deployment& product, const DiffSet& diffs, std::size_t pair, const std::string& path) {
    try {
        return DiffToShow(product, diffs, pair, path);
    } catch (const NoDiff& failure) {
        product.Out().Warning(failure.what());
        return {};
    }
}

}  // namespace

std::vector<FileOutcome> OutcomesOf(Deployment& product, std::span<const PlannedTarget> targets) {
    std::vector<FileOutcome> outcomes;
    outcomes.reserve(targets.size());
    std::vector<FilePair> changed;
    for (const PlannedTarget& planned : targets) {
        outcomes.push_back(OutcomeWithoutDiff(planned));
        if (planned.IsChange() && product.Wanted().wantsDiffs)
            changed.push_back({planned.before.exists ? planned.path : "", planned.staged->File()});
    }
    if (changed.empty()) return outcomes;
    const DiffSet diffs(std::move(changed));
    std::size_t pair = 0;
    for (std::size_t i = 0; i < targets.size(); ++i)
        if (targets[i].IsChange()) outcomes[i].diff = DiffIfAny(product, diffs, pair++, targets[i].path);
    return outcomes;
}

}  // namespace ZET::Deploy
