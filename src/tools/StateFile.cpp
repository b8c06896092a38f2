#include "StateFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "ExitStatus.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

void ReplaceStateFile(const std::string& file, const std::string& text) {
    if (text.empty()) {
        if (IsFileExist(file)) RemoveFile(file);
        return;
    }
    const std::string temporary = file + ZETTemporarySuffix;
    std::ofstream stream(temporary, std::ios::binary);
    stream << text << std::flush;
    if (!stream)
        throw Failure(temporary + ": cannot be written: " + std::strerror(errno) +
                      " (make room, or allow it)");
    stream.close();
    RenameFile(temporary, file);
}

}  // namespace ZET
