#ifndef ZET_UNIFIED_DIFF_H
#define ZET_UNIFIED_DIFF_H

#include <string>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

/// There is no diff of these two files, while others may have one.
class NoDiff final : public Failure {
  public:
    using Failure::Failure;
};

/// The unified diff of two files' bytes, fit for `patch -p1`: `shownPath` (without its leading "/") below
/// "a/" and "b/". A side whose file name is empty is a file that is not there. Empty when there is no
/// difference that a diff can show; `NoDiff` where they cannot be compared.
std::string UnifiedDiff(const std::string& oldFile, const std::string& newFile, const std::string& shownPath);

/// The lines before the changes, which name the files.
std::string DiffLabels(const std::string& oldFile, const std::string& newFile, const std::string& shownPath);

}  // namespace ZET::Deploy

#endif
