#ifndef ZET_TAKE_BACK_WORK_H
#define ZET_TAKE_BACK_WORK_H

#include "deploy/state/KnownFiles.h"
#include "deploy/state/Recording.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/TakeBack.h"

namespace ZET::Deploy {

/// What is recorded before the step is done. `known` is what was known of the files when it was decided.
ExpectedFile ExpectedOf(Deployment& product, const KnownFiles& known, const TakeBackStep& step);

void DoStep(Deployment& product, const TakeBackStep& step);

}  // namespace ZET::Deploy

#endif
