#include "PlainEngine.h"

#include <libintl.h>
#include <unistd.h>

#include <fstream>

#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormatCall.h"
#include "zet/ZETLogProvider.h"

namespace ZET {

namespace {

constexpr char kSource[] = "src/interfaces/zet-config/ZETConfigFile";
constexpr char kBegin[] = "# ---ZET_BEGIN---";
constexpr char kEnd[] = "# ----ZET_END----";
constexpr char kFormer[] = "# --PRE-ZET-- ";
constexpr char kNotice[] = "# --ZET_CONFIG_COMMENT--";
constexpr char kTemplateComment[] = "# --ZET_TEMPLATE_COMMENT--";
constexpr char kCommentEnd[] = "# --ZET_COMMENT_END--";

std::string TextOf(const char* formatted) {
    return formatted == nullptr ? "" : formatted;
}

void Log(ZETLogLevel level, const std::string& text) {
    // The count marks the text as finished, so "%" in it has no meaning.
    CZETLogProvider::GetLogProvider().Put(level, 1, text.c_str());
}

void RequireArgument(const char* function, const std::string& argument) {
    if (!argument.empty()) return;
    CZETFormatCall format(kSource, function, __LINE__);
    throw EZETCheckError(TextOf(format(1, dgettext("libzet-core", "Argument is empty for '%s'."), function)),
                         "");
}

void WarnUnexpected(const char* function, const std::string& token, int lineNumber) {
    CZETFormatCall format(kSource, function, __LINE__);
    Log(ZETLogWarning, TextOf(format(2, dgettext("libzet-config", "Unexpected token '%s' in line %d."),
                                     token.c_str(), lineNumber)));
}

[[noreturn]] void ThrowStat(const char* function, const std::string& fileName) {
    CZETFormatCall format(kSource, function, __LINE__);
    throw EZETError(TextOf(format(1, dgettext("libzet-core", "Error stat '%s':%m"), fileName.c_str())), "");
}

[[noreturn]] void ThrowSave(const std::string& fileName) {
    CZETFormatCall format(kSource, "InternalSaveAs", __LINE__);
    throw EZETError(TextOf(format(1, dgettext("libzet-core", "Failed to save file '%s'."), fileName.c_str())),
                    "");
}

bool BeginsWith(const std::string& line, const std::string& marker) {
    return line.compare(0, marker.size(), marker) == 0;
}

// A last line that had no line feed gets none, unless it is empty.
void EndLine(std::ostream& output, const std::istream& input, const std::string& line) {
    if (input.eof() && !line.empty()) return;
    output << "\n";
}

// Opening anything else could block, or change what a device does.
bool IsRegularFile(const std::string& fileName) {
    struct stat status = {};
    return stat(fileName.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The status of the regular file at this name; a link at the name does not count.
std::optional<struct stat> StatusAt(const std::string& fileName) {
    struct stat status = {};
    if (lstat(fileName.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return status;
}

// A leftover temporary file may be overwritten only if it is a regular file with one name, and nobody can
// have it open who could not write into the target.
bool MayBeOverwritten(const std::string& temporary, const std::optional<struct stat>& target) {
    struct stat status = {};
    if (lstat(temporary.c_str(), &status) != 0) return true;
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1) return false;
    return status.st_uid == geteuid() || (target && target->st_uid == status.st_uid);
}

}  // namespace

PlainConfigFile::PlainConfigFile(IZETCore& core) : m_core(core) {}

void PlainConfigFile::Rewind() {
    m_content->clear(m_content->rdstate() & ~std::ios::eofbit);
    m_content->seekg(0);
}

std::string PlainConfigFile::ReadableText() const {
    return m_content == nullptr || IsExhausted() ? "" : m_content->str();
}

bool PlainConfigFile::Open(const std::string& fileName, const std::string& role, bool noMarkers) {
    m_fromTemplate = false;
    return InternalOpen(fileName, role, noMarkers);
}

bool PlainConfigFile::OpenTemplate(const std::string& templateName, const std::string& fileName,
                                   const std::string& role, bool noMarkers) {
    RequireArgument("OpenTemplate", fileName);
    m_targetFileName = fileName;
    m_fromTemplate = true;
    return InternalOpen(m_core.GetParam("ZET_CFG_DIR") + "/" + templateName, role, noMarkers);
}

bool PlainConfigFile::InternalOpen(const std::string& fileName, const std::string& role, bool noMarkers) {
    RequireArgument("InternalOpen", fileName);
    m_noMarkers = noMarkers;
    m_fileName = fileName;
    m_role = role;
    InternalNotice();
    if (ReadFile(fileName)) return true;
    m_content.reset();
    CZETFormatCall format(kSource, "InternalOpen", __LINE__);
    Log(ZETLogError,
        TextOf(format(1, dgettext("libzet-core", "Failed to open file '%s'."), fileName.c_str())));
    return false;
}

bool PlainConfigFile::ReadFile(const std::string& fileName) {
    if (!IsRegularFile(fileName)) return false;
    std::ifstream file(fileName);
    if (!file) return false;
    if (stat(fileName.c_str(), &m_fileStat) != 0) ThrowStat("InternalOpen", fileName);
    m_content = std::make_unique<std::stringstream>();
    std::string line;
    while (std::getline(file, line)) {
        *m_content << line;
        EndLine(*m_content, file, line);
    }
    return !file.bad();
}

void PlainConfigFile::InternalNotice() {
    CZETFormatCall format(kSource, "InternalNotice", __LINE__);
    if (m_fromTemplate) {
        Log(ZETLogNotice,
            TextOf(format(2, dgettext("libzet-config", "Process config file template '%s' to '%s'..."),
                          m_fileName.c_str(), m_targetFileName.c_str())));
    } else {
        Log(ZETLogNotice,
            TextOf(format(1, dgettext("libzet-config", "Process config file '%s'..."), m_fileName.c_str())));
    }
}

std::string PlainConfigFile::Header() {
    if (!m_fromTemplate) {
        return dgettext("libzet-config",
                        "# This file is partially modified by zet(7).\n"
                        "# Do not edit data between ZET_BEGIN and ZET_END labels manually\n"
                        "# unless you know what you are doing.\n"
                        "# These lines are updated automatically by zet-init(1) and zet-client(1).\n");
    }
    CZETFormatCall format(kSource, "Header", __LINE__);
    return TextOf(format(2,
                         dgettext("libzet-config",
                                  "# This file is generated automatically by zet(7).\n"
                                  "# DO NOT EDIT THIS FILE, because it will be overwritten by zet(7) and\n"
                                  "# your changes will be lost.\n"
                                  "# Edit '%s'\n"
                                  "# and invoke the command:\n"
                                  "#\n"
                                  "# $ %s commit-config\n"
                                  "#"),
                         m_fileName.c_str(), m_role == "server" ? "zet-init" : "zet-client"));
}

void PlainConfigFile::InsertHeader(const std::string& header) {
    RequireArgument("InsertHeader", header);
    auto output = std::make_unique<std::stringstream>();
    Rewind();
    bool placed = false;
    std::string line;
    while (std::getline(*m_content, line)) {
        if (!placed && line.empty()) continue;
        if (!placed && line.find(kNotice) == std::string::npos) {
            *output << kNotice << "\n" << header << "\n" << kCommentEnd << "\n";
        }
        placed = true;
        *output << line;
        EndLine(*output, *m_content, line);
    }
    m_content = std::move(output);
}

std::string PlainConfigFile::GetLine(const std::string& pattern) {
    RequireArgument("GetLine", pattern);
    Rewind();
    std::string line;
    while (std::getline(*m_content, line)) {
        if (m_core.MatchRegEx(pattern, line, nullptr, 0)) return line;
    }
    return "";
}

void PlainConfigFile::SetLine(const std::string& pattern, const std::string& line) {
    RequireArgument("SetLine", pattern);
    auto output = std::make_unique<std::stringstream>();
    Rewind();
    bool found = false;
    bool inside = false;
    int lineNumber = 0;
    std::string current;
    while (std::getline(*m_content, current)) {
        ++lineNumber;
        if (BeginsWith(current, kBegin)) {
            if (inside) WarnUnexpected("SetLine", kBegin, lineNumber);
            inside = true;
        } else if (BeginsWith(current, kEnd)) {
            if (!inside) WarnUnexpected("SetLine", kEnd, lineNumber);
            inside = false;
        }
        if (m_core.MatchRegEx(pattern, current, nullptr, 0)) {
            if (m_noMarkers || inside) {
                current = line;
            } else {
                *output << kFormer << current << "\n" << kBegin << "\n" << line << "\n";
                current = kEnd;
            }
            found = true;
        }
        *output << current;
        EndLine(*output, *m_content, current);
    }
    if (!found) {
        *output << "\n";
        if (m_noMarkers) {
            *output << line << "\n";
        } else {
            *output << kBegin << "\n" << line << "\n" << kEnd << "\n";
        }
    }
    m_content = std::move(output);
}

void PlainConfigFile::RestoreLine(const std::string& pattern) {
    RequireArgument("RestoreLine", pattern);
    const std::string restorePattern =
        std::string("^") + kFormer + (pattern[0] == '^' ? pattern.substr(1) : pattern);
    auto output = std::make_unique<std::stringstream>();
    Rewind();
    bool inside = false;
    int lineNumber = 0;
    std::string current;
    while (std::getline(*m_content, current)) {
        ++lineNumber;
        if (BeginsWith(current, kBegin)) {
            if (inside) WarnUnexpected("RestoreLine", kBegin, lineNumber);
            inside = true;
        } else if (BeginsWith(current, kEnd)) {
            if (inside) {
                inside = false;
                continue;
            }
            WarnUnexpected("RestoreLine", kEnd, lineNumber);
        }
        if (m_core.MatchRegEx(restorePattern, current, nullptr, 0)) {
            current.erase(0, std::string(kFormer).size());
        }
        if (inside) continue;
        *output << current;
        EndLine(*output, *m_content, current);
    }
    m_content = std::move(output);
}

std::string PlainConfigFile::GetParamValue(const std::string& name) {
    RequireArgument("GetParamValue", name);
    const std::string line = GetLine("^\\s*" + name + "=");
    const auto equals = line.find('=');
    return equals == std::string::npos ? "" : line.substr(equals + 1);
}

void PlainConfigFile::SetParamValue(const std::string& name, const std::string& value) {
    RequireArgument("SetParamValue", name);
    SetLine("^#*\\s*" + name + "=", name + "=" + value);
}

void PlainConfigFile::RestoreParamValue(const std::string& name) {
    RequireArgument("RestoreParamValue", name);
    RestoreLine("#*\\s*" + name + "=");
}

void PlainConfigFile::RequireContent(const char* function) {
    if (m_content != nullptr) return;
    CZETFormatCall format(kSource, function, __LINE__);
    throw EZETCheckError(
        TextOf(format(1, dgettext("libzet-config", "Invalid config object '%s'."), m_fileName.c_str())), "");
}

void PlainConfigFile::Substitute(std::string& line, const StringMap& values) {
    auto start = line.find("${");
    while (start != std::string::npos) {
        const auto end = line.find('}', start);
        if (end == std::string::npos) continue;
        const std::string placeholder = line.substr(start, end - start + 1);
        const auto value = values.find(placeholder);
        if (value != values.end()) {
            line.replace(start, placeholder.size(), value->second);
        } else {
            CZETFormatCall format(kSource, "ApplyTemplates", __LINE__);
            Log(ZETLogWarning,
                TextOf(format(1, dgettext("libzet-config", "Template parameter '%s' not found."),
                              placeholder.c_str())));
            line[start] = '!';
        }
        start = line.find("${", start);
    }
}

void PlainConfigFile::ApplyTemplates(StringMap& values) {
    RequireContent("ApplyTemplates");
    auto output = std::make_unique<std::stringstream>();
    Rewind();
    std::string line;
    while (std::getline(*m_content, line)) {
        if (!line.empty() && line[0] != '#') Substitute(line, values);
        *output << line;
        EndLine(*output, *m_content, line);
    }
    m_content = std::move(output);
}

void PlainConfigFile::RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) {
    RequireContent("RemoveMarkers");
    auto output = std::make_unique<std::stringstream>();
    Rewind();
    int lineNumber = 0;
    bool inside = false;
    std::string line;
    while (std::getline(*m_content, line)) {
        ++lineNumber;
        bool keep = !inside;
        if (BeginsWith(line, beginMarker)) {
            if (inside) WarnUnexpected("RemoveMarkers", beginMarker, lineNumber);
            inside = true;
            keep = false;
        } else if (BeginsWith(line, endMarker)) {
            inside = false;
        }
        if (!keep) continue;
        if (lineNumber > 1) *output << "\n";
        *output << line;
    }
    // The read that found no line emptied `line`, unless the line before it had already met the end.
    EndLine(*output, *m_content, line);
    m_content = std::move(output);
}

void PlainConfigFile::RemoveZETMarkers() {
    RemoveMarkers(kBegin, kEnd);
    RemoveMarkers(kNotice, kCommentEnd);
}

void PlainConfigFile::Save(bool noBackup) {
    if (!m_noMarkers) InsertHeader(Header());
    if (m_fromTemplate) {
        RemoveMarkers(kTemplateComment, kCommentEnd);
        InternalSaveAs(m_targetFileName, noBackup);
    } else {
        InternalSaveAs(m_fileName, noBackup);
    }
}

void PlainConfigFile::InternalSaveAs(const std::string& fileName, bool noBackup) {
    const std::string temporary = fileName + ".tmp";
    const std::optional<struct stat> target = StatusAt(fileName);
    if (!MayBeOverwritten(temporary, target)) ThrowSave(temporary);
    WriteTemporary(temporary);
    GiveOwnerAndMode(temporary, target);
    if (!noBackup) KeepFormerState(fileName);
    RenameFile(temporary, fileName);
}

void PlainConfigFile::WriteTemporary(const std::string& temporary) {
    std::ofstream file(temporary, std::ios::trunc);
    if (!file) ThrowSave(temporary);
    chmod(temporary.c_str(), 0600);  // private until it is complete
    const auto readState = m_content->rdstate();
    Rewind();
    std::string line;
    while (file && std::getline(*m_content, line)) {
        file << line;
        EndLine(file, *m_content, line);
    }
    m_content->clear(readState);  // the text can be read again, unless a lookup had exhausted it
    file.flush();
    if (!file) ThrowSave(temporary);
}

void PlainConfigFile::GiveOwnerAndMode(const std::string& temporary,
                                       const std::optional<struct stat>& target) {
    struct stat status = {};
    if (stat(temporary.c_str(), &status) != 0) ThrowStat("InternalSaveAs", temporary);
    const bool isGiven = !target || chown(temporary.c_str(), target->st_uid, target->st_gid) == 0;
    struct stat owned = {};
    if (stat(temporary.c_str(), &owned) != 0) ThrowStat("InternalSaveAs", temporary);
    // Others may run it with its owner's rights only if they could before, or if the template says so.
    const bool isHis = owned.st_uid == m_fileStat.st_uid && owned.st_gid == m_fileStat.st_gid;
    const bool mayRunAsOwner = isGiven && (m_fromTemplate || isHis);
    if (status.st_mode == m_fileStat.st_mode) return;
    const mode_t mask = umask(0);
    chmod(temporary.c_str(), mayRunAsOwner ? m_fileStat.st_mode : m_fileStat.st_mode & ~06000U);
    umask(mask);
}

void PlainConfigFile::KeepFormerState(const std::string& fileName) {
    if (!IsFileExist(fileName)) {
        CreateFile(fileName + ".no_file_before_zet");
    } else if (!IsFileExist(fileName + ".before_zet") && !IsFileExist(fileName + ".no_file_before_zet")) {
        RenameFile(fileName, fileName + ".before_zet");
    }
}

}  // namespace ZET
