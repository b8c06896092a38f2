#include <sys/stat.h>

#include <ostream>
#include <utility>

#include "Companions.h"
#include "FileAccess.h"
#include "FileStream.h"
#include "Messages.h"
#include "TextReader.h"
#include "ZETConfig.h"
#include "zet/ZETFiles.h"

namespace ZET {

namespace {

constexpr char kFileServerKey[] = "NETWORK_FS_TYPE";

[[noreturn]] void ThrowCannotOpen(const std::string& fileName, const char* function, std::size_t line) {
    Message message(kManagerSource, function, line);
    Throw<EZETError>(
        message.Format()(1, message.Translated(kCoreDomain, "Failed to open file '%s'."), fileName.c_str()));
}

/// Splits an entry at its first "=" without trimming; the last entry of a key wins.
void ReadEntry(std::string_view line, StringMap& values) {
    const std::size_t equalsSign = line.find('=');
    if (line.starts_with('#') || equalsSign == std::string_view::npos) return;
    values[std::string(line.substr(0, equalsSign))] = line.substr(equalsSign + 1);
}

/// Adds the entries of a status file to `values`; false if it cannot be read.
bool ReadStatusFile(const std::string& fileName, StringMap& values) {
    const Descriptor file = OpenForReading(fileName);
    struct stat status = {};
    Buffer bytes;
    if (!file.IsOpen() || fstat(file, &status) != 0 || !ReadAll(file, status, bytes)) return false;
    TextReader text(std::move(bytes));
    std::string_view line;
    while (text.ReadLine(line))
        ReadEntry(line, values);
    return true;
}

Descriptor OpenStatusFile(const std::string& fileName, const char* function, std::size_t line) {
    Descriptor file = OpenForWriting(fileName);
    if (!file.IsOpen()) ThrowCannotOpen(fileName, function, line);
    return file;
}

std::string FileServerStatusName(IZETCore& core) {
    return core.GetParam("ZET_VAR_LIB_DIR") + "/zet-client-fs.status";
}

}  // namespace

std::string CZETConfig::ConfigStatusName(const std::string& mode) {
    RequireArgument(mode, kManagerSource, "ConfigStatusName", Here());
    const std::string directory = m_core.GetParam("ZET_VAR_LIB_DIR") + "/";
    if (mode == "server") return directory + "zet-server.status";
    if (mode == "client") return directory + "zet-client.status";
    const std::size_t line = Here();
    Message message(kManagerSource, "ConfigStatusName", line);
    throw EZETInternalError(
        TextOf(message.Format()(1, message.Translated(kModuleDomain, "Invalid mode '%s'."), mode.c_str())),
        "", kManagerSource, "ConfigStatusName", line);
}

void CZETConfig::SaveConfigStatus(const std::string& mode) {
    FileStream stream(OpenStatusFile(ConfigStatusName(mode), "SaveConfigStatus", Here()));
    m_core.WriteStatus(stream);
}

bool CZETConfig::IsConfigStatusExist(const std::string& mode) {
    return IsFileExist(ConfigStatusName(mode));
}

void CZETConfig::RemoveConfigStatus(const std::string& mode) {
    RemoveIfExists(ConfigStatusName(mode));
}

void CZETConfig::LoadConfigStatus(const std::string& mode, StringMap& values) {
    values.clear();
    const std::string fileName = ConfigStatusName(mode);
    if (!ReadStatusFile(fileName, values)) ThrowCannotOpen(fileName, "LoadConfigStatus", Here());
}

void CZETConfig::SaveFileServerStatus() {
    FileStream stream(OpenStatusFile(FileServerStatusName(m_core), "SaveFileServerStatus", Here()));
    // Queried only now: if the core fails, the file is already empty and stays so.
    const std::string type = m_core.GetParam(kFileServerKey);
    stream << kFileServerKey << '=' << type << '\n' << std::flush;
}

std::string CZETConfig::GetFileServerStatus() {
    StringMap values;
    const std::string fileName = FileServerStatusName(m_core);
    if (IsFileExist(fileName) && !ReadStatusFile(fileName, values)) {
        ThrowCannotOpen(fileName, "GetFileServerStatus", Here());
    }
    return values[kFileServerKey];
}

void CZETConfig::RemoveFileServerStatus() {
    RemoveIfExists(FileServerStatusName(m_core));
}

}  // namespace ZET
