#ifndef ZET_UNKEPT_TEXT_H
#define ZET_UNKEPT_TEXT_H

#include <string>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Throws a `Failure` if replacing the file would lose what somebody else made of it: neither the reserve
/// nor, if the command is recorded, the history keeps that. The reader knows the file as `path`.
void RequireKeptText(Deployment& product, const std::string& path, bool isRecorded);

}  // namespace ZET::Deploy

#endif
