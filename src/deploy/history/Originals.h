#ifndef ZET_ORIGINALS_H
#define ZET_ORIGINALS_H

#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// What stands beside a file since the product wrote it first.
struct KeptOriginal {
    std::string path;     ///< of the file
    std::string reserve;  ///< the file as it was, or the record that there was none
    bool existed = true;  ///< whether there was a file
};

/// Those that are there, of all files that the history knows or has entries of, sorted. A history that cannot
/// be read is a `Failure`.
std::vector<KeptOriginal> ListOriginals(Deployment& product);

}  // namespace ZET::Deploy

#endif
