#ifndef ZET_HISTORY_ERASURE_H
#define ZET_HISTORY_ERASURE_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/History.h"

namespace ZET::Deploy {

/// Erases for good the texts of the file and its companions, and the words of commands that held one of them.
ErasedHistory EraseHistory(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
