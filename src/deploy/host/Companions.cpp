#include "deploy/host/Companions.h"

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

}  // namespace ZET::Deploy
