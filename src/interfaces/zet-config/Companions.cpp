#include "Companions.h"

#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

void KeepOriginal(const std::string& fileName, void (*keep)(const std::string& from, const std::string& to)) {
    const std::string reserve = fileName + ZETReserveSuffix;
    const std::string absence = fileName + ZETAbsenceSuffix;
    if (!IsFileExist(fileName)) {
        CreateFile(absence);
    } else if (!IsFileExist(reserve) && !IsFileExist(absence)) {
        keep(fileName, reserve);
    }
}

void RemoveIfExists(const std::string& fileName) {
    if (IsFileExist(fileName)) RemoveFile(fileName);
}

}  // namespace ZET
