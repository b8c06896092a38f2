#ifndef ZET_UNIFIED_DIFF_H
#define ZET_UNIFIED_DIFF_H

#include <string>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

/// Thrown if these two files cannot be compared, while others may be.
class NoDiff final : public Failure {
  public:
    using Failure::Failure;
};

/// The unified diff of two files, fit for `patch -p1`. Its labels are `shownPath` (without its leading "/")
/// below "a/" and "b/". An empty file name stands for a file that does not exist. Empty if there is no
/// difference that a diff can show. Throws `NoDiff` if the files cannot be compared.
std::string UnifiedDiff(const std::string& oldFile, const std::string& newFile, const std::string& shownPath);

/// The lines before the changes, which name the files.
std::string DiffLabels(const std::string& oldFile, const std::string& newFile, const std::string& shownPath);

}  // namespace ZET::Deploy

#endif
