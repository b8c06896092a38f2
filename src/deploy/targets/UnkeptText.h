#ifndef ZET_UNKEPT_TEXT_H
#define ZET_UNKEPT_TEXT_H

#include <string>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// A `Failure` when the file is going to be replaced and holds what somebody else made of it, which then
/// neither the history has, where the command is recorded, nor the reserve. The reader knows the file as
/// `path`.
void RequireKeptText(Deployment& product, const std::string& path, bool isRecorded);

}  // namespace ZET::Deploy

#endif
