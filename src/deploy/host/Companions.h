#ifndef ZET_COMPANIONS_H
#define ZET_COMPANIONS_H

#include <string>

/// What stands beside a file.
namespace ZET::Deploy {

/// The reserve of a file, if it has one; else empty.
std::string ReserveOf(const std::string& path);

/// The reserve that the file has after a change that keeps one.
std::string ReserveAfterChange(const std::string& path);

/// A `Failure` for a file that is itself what stands beside another: what was there before the product would
/// be lost with it.
void RequireNoCompanion(const std::string& path);

}  // namespace ZET::Deploy

#endif
