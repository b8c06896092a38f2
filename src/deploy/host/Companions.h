#ifndef ZET_COMPANIONS_H
#define ZET_COMPANIONS_H

#include <string>

#include "zet/ZETFormat.h"

/// The files that the product keeps beside a file: its reserve, and the record that there was no file.
namespace ZET::Deploy {

inline constexpr const char* kCompanionSuffixes[] = {ZETReserveSuffix, ZETAbsenceSuffix};

/// The file that a companion of this name belongs to; the name itself if it is not that of a companion.
std::string FileBeside(const std::string& name);

bool HasCompanion(const std::string& path);

/// The path of the file's reserve; empty if it has none.
std::string ReserveOf(const std::string& path);

/// The reserve that the file will have after a change that keeps one; empty if it will have none.
std::string ReserveAfterChange(const std::string& path);

/// Throws a `Failure` if the path is that of a companion: what was there before the product would be lost.
void RequireNoCompanion(const std::string& path);

}  // namespace ZET::Deploy

#endif
