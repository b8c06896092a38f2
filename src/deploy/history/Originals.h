#ifndef ZET_ORIGINALS_H
#define ZET_ORIGINALS_H

#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// What has stood beside a file since the product first wrote it.
struct KeptOriginal {
    std::string path;     ///< of the file
    std::string reserve;  ///< the original, or the record that there was none
    bool existed = true;  ///< whether there was a file
};

/// The originals that are still there, sorted, of all files that the history knows or has entries of. Throws
/// a `Failure` if the history cannot be read.
std::vector<KeptOriginal> ListOriginals(Deployment& product);

}  // namespace ZET::Deploy

#endif
