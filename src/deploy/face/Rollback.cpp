#include "zet/deploy/Rollback.h"

#include "deploy/face/Parts.h"
#include "deploy/targets/Rollback.h"

namespace ZET::Deploy {

Outcome RollBack(Product& product, const std::vector<std::string>& files, bool isForced) {
    RollbackResult result;
    Outcome outcome = Collect(product, nullptr, [&](Deployment& deployment) {
        result = RollBack(deployment, files, {isForced, false});
    });
    outcome.isComplete = !result.isKept;
    return outcome;
}

}  // namespace ZET::Deploy
