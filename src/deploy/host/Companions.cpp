#include "deploy/host/Companions.h"

#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

std::string FileBeside(const std::string& name) {
    for (const std::string_view suffix : kCompanionSuffixes)
        if (name.ends_with(suffix)) return name.substr(0, name.size() - suffix.size());
    return name;
}

bool HasCompanion(const std::string& path) {
    return IsFileExist(path + ZETReserveSuffix) || IsFileExist(path + ZETAbsenceSuffix);
}

std::string ReserveOf(const std::string& path) {
    const std::string reserve = path + ZETReserveSuffix;
    return IsFileExist(reserve) ? reserve : "";
}

std::string ReserveAfterChange(const std::string& path) {
    return IsFileExist(path) && !IsFileExist(path + ZETAbsenceSuffix) ? path + ZETReserveSuffix
                                                                      : ReserveOf(path);
}

void RequireNoCompanion(const std::string& path) {
    const auto require = [&](std::string_view suffix, const char* what) {
        if (!path.ends_with(suffix)) return;
        const std::string file = path.substr(0, path.size() - suffix.size());
        if (file.empty() || file.ends_with('/')) return;
        throw Failure(
            {.file = path, .text = Words(what, file), .remedy = Words("name %s, or copy this one", file)});
    };
    require(ZETReserveSuffix, ZET_TEXT("is kept as the original of %s"));
    require(ZETAbsenceSuffix, ZET_TEXT("records that there was no %s"));
}

}  // namespace ZET::Deploy
