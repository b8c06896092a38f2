#ifndef ZET_UNKEPT_TEXT_H
#define ZET_UNKEPT_TEXT_H

#include <string>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Whether the file holds what somebody else made of it. Where nothing stands beside it, that is about to
/// become its reserve.
bool HoldsOthersWork(Deployment& product, const std::string& path);

/// A `Failure` when the file is going to be replaced and holds others' work, which then neither the history
/// has, where the command is recorded, nor the reserve. The reader knows the file as `path`.
void RequireKeptText(Deployment& product, const std::string& path, bool isRecorded);

}  // namespace ZET::Deploy

#endif
