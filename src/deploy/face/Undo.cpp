#include "zet/deploy/Undo.h"

#include "deploy/face/Parts.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/undo/Undo.h"

namespace ZET::Deploy {

namespace {

template <typename Call>
Outcome Collected(Product& product, Call call) {
    UndoResult result;
    Outcome outcome = Collect(product, nullptr, [&](Deployment& deployment) { result = call(deployment); });
    if (!result.problems.empty())
        throw Failure({.text = _("not everything can be put back, and nothing was changed"),
                       .remedy = _("see to the files below"),
                       .output = LinesOf(result.problems)});
    outcome.isComplete = !result.isKept;
    return outcome;
}

}  // namespace

Outcome Undo(Product& product, const UndoOptions& options) {
    return Collected(product, [&](Deployment& deployment) { return Undo(deployment, options); });
}

Outcome RollBackTo(Product& product, std::int64_t entry, const RollBackToOptions& options) {
    return Collected(product, [&](Deployment& deployment) { return RollBackTo(deployment, entry, options); });
}

}  // namespace ZET::Deploy
