#include "deploy/host/Companions.h"

#include <string_view>

#include "deploy/host/Failure.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

std::string ReserveOf(const std::string& path) {
    const std::string reserve = path + ZETReserveSuffix;
    return IsFileExist(reserve) ? reserve : "";
}

std::string ReserveAfterChange(const std::string& path) {
    return IsFileExist(path) && !IsFileExist(path + ZETAbsenceSuffix) ? path + ZETReserveSuffix
                                                                      : ReserveOf(path);
}

void RequireNoCompanion(const std::string& path) {
    const auto require = [&](std::string_view suffix, const std::string& what) {
        if (!path.ends_with(suffix)) return;
        const std::string file = path.substr(0, path.size() - suffix.size());
        if (file.empty() || file.ends_with('/')) return;
        throw Failure({.file = path, .text = what + file, .remedy = "name " + file + ", or copy this one"});
    };
    require(ZETReserveSuffix, "is kept as the original of ");
    require(ZETAbsenceSuffix, "records that there was no ");
}

}  // namespace ZET::Deploy
