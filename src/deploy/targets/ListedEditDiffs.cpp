#include "deploy/targets/ListedEditDiffs.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/targets/EditMerge.h"
#include "deploy/targets/LinesPlan.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/WrittenFiles.h"

namespace ZET::Deploy {

namespace {

template <typename Make>
void AddDiff(std::vector<ListedEditState>& states, const std::string& path, Make make) {
    const auto last = std::find_if(states.rbegin(), states.rend(), [&](const ListedEditState& state) {
        return state.path == path && state.state != kInSync;
    });
    if (last == states.rend()) return;
    try {
        last->diff = make();
    } catch (const Failure& failure) {
        last->trouble = failure.what();
    }
}

}  // namespace

std::vector<Problem> AddDiffsOfFiles(Deployment& product, const KnownFiles& known, const Staging& staging,
                                     std::vector<ListedEditState>& states) {
    const LinesPlan lines(product, known, staging, ConfiguredOnEdit(product));
    for (const PlannedLines& planned : lines.Files())
        AddDiff(states, planned.file.path, [&] { return lines.OutcomeOf(planned).diff; });
    TakeBack takeBack(product, known, {.isOfCommit = true});
    for (const std::string& path : lines.Emptied()) {
        AddDiff(states, path, [&] {
            TakeBackStep step{WrittenLines(product, path)};
            takeBack.Decide(step);
            return step.outcome.diff;
        });
    }
    return lines.Problems();
}

}  // namespace ZET::Deploy
