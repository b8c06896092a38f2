#ifndef ZET_COMPANIONS_H
#define ZET_COMPANIONS_H

#include <string>

#include "zet/ZETFormat.h"

/// What stands beside a file.
namespace ZET::Deploy {

inline constexpr const char* kCompanionSuffixes[] = {ZETReserveSuffix, ZETAbsenceSuffix};

/// The file that one of this name stands beside; the name itself where it is no companion's.
std::string FileBeside(const std::string& name);

bool HasCompanion(const std::string& path);

/// The reserve of a file, if it has one; else empty.
std::string ReserveOf(const std::string& path);

/// The reserve that the file has after a change that keeps one.
std::string ReserveAfterChange(const std::string& path);

/// A `Failure` for a file that is itself what stands beside another: what was there before the product would
/// be lost with it.
void RequireNoCompanion(const std::string& path);

}  // namespace ZET::Deploy

#endif
