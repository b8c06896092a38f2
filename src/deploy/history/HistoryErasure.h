#ifndef ZET_HISTORY_ERASURE_H
#define ZET_HISTORY_ERASURE_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/History.h"

namespace ZET::Deploy {

/// Takes the texts of the file, of what stands beside it, and the words that held one, out for good.
ErasedHistory EraseHistory(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
