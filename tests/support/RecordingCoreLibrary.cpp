// What the core's library defines for a module; each call is recorded in the one recording core.

#include <fcntl.h>
#include <libintl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "RecordingCore.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormatCall.h"
#include "zet/ZETInterface.h"
#include "zet/ZETLogProvider.h"

// The program's own definition takes precedence over that of the C library.
char* dgettext(const char* domain, const char* text) noexcept {
    const int before = errno;
    ZET::RecordingCore* core = ZET::RecordingCore::Current();
    const char* translated = core == nullptr ? text : core->Translate(domain, text);
    errno = before;
    return const_cast<char*>(translated);
}

namespace ZET {

namespace {
void Note(const char* call, const std::string& arguments) {
    if (RecordingCore* core = RecordingCore::Current()) core->Note(call, arguments);
}

[[noreturn]] void ThrowSystemError(const std::string& what) {
    throw EZETError(what + ": " + std::strerror(errno), "");
}
}  // namespace

EZETError::EZETError(const std::string& message, const std::string& detail)
    : m_message(message), m_detail(detail) {}
EZETError::EZETError(const std::string& message, const std::string& detail, const std::string& source,
                     const std::string& function, std::size_t line)
    : m_message(message), m_detail(detail), m_source(source), m_function(function), m_line(line) {}
EZETError::~EZETError() = default;
const char* EZETError::what() const noexcept {
    return m_message.c_str();
}
const std::string& EZETError::GetMessage() const noexcept {
    return m_message;
}
const std::string& EZETError::GetDetail() const noexcept {
    return m_detail;
}
const std::string& EZETError::GetSource() const noexcept {
    return m_source;
}
const std::string& EZETError::GetFunction() const noexcept {
    return m_function;
}
std::size_t EZETError::GetLine() const noexcept {
    return m_line;
}

EZETCheckError::EZETCheckError(const std::string& message, const std::string& detail)
    : EZETError(message, detail) {}
EZETCheckError::~EZETCheckError() = default;

EZETInternalError::EZETInternalError(const std::string& message, const std::string& detail,
                                     const std::string& source, const std::string& function, std::size_t line)
    : EZETError(message, detail, source, function, line) {}
EZETInternalError::~EZETInternalError() = default;

CZETInterface::CZETInterface(const std::string& name) : m_name(name) {}
CZETInterface::~CZETInterface() = default;
const std::string& CZETInterface::GetName() const {
    return m_name;
}

namespace {
// The formatter has no field for its constructor arguments.
std::map<const CZETFormatCall*, RecordedMessage>& OpenMessages() {
    static std::map<const CZETFormatCall*, RecordedMessage> messages;
    return messages;
}
}  // namespace

CZETFormatCall::CZETFormatCall(const char* source, const char* function, std::size_t line) {
    const int before = errno;
    RecordedMessage& message = OpenMessages()[this];
    message.source = source;
    message.function = function;
    message.line = line;
    if (const RecordingCore* core = RecordingCore::Current())
        message.translationsBefore = core->Translations();
    errno = before;
}

CZETFormatCall::~CZETFormatCall() {
    OpenMessages().erase(this);
    std::free(m_text);
}

const char* CZETFormatCall::operator()(std::size_t count, const char* format, ...) {
    const int callersError = errno;
    RecordingCore* core = RecordingCore::Current();
    if (core == nullptr) return nullptr;
    RecordedMessage message = OpenMessages()[this];
    message.count = count;
    std::free(std::exchange(m_text, nullptr));
    std::va_list arguments;
    va_start(arguments, format);
    errno = callersError;
    m_text = core->Format(message, format, arguments);
    va_end(arguments);
    return m_text;
}

CZETLogProvider& CZETLogProvider::GetLogProvider() {
    static CZETLogProvider provider;
    return provider;
}

void CZETLogProvider::Put(ZETLogLevel level, std::size_t count, const char* format, ...) {
    const std::string extra = count == 1 ? "" : " (" + std::to_string(count) + " texts)";
    Note("Put", std::to_string(level) + " " + (format == nullptr ? "(null)" : format) + extra);
}

void CreateFile(const std::string& path) {
    Note("CreateFile", path);
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0) ThrowSystemError("create " + path);
    ::close(file);
}

void RemoveFile(const std::string& path) {
    Note("RemoveFile", path);
    if (::unlink(path.c_str()) != 0) ThrowSystemError("remove " + path);
}

void RenameFile(const std::string& from, const std::string& to) {
    Note("RenameFile", from + " " + to);
    if (::rename(from.c_str(), to.c_str()) != 0) ThrowSystemError("rename " + from + " to " + to);
}

bool IsFileExist(const std::string& path) {
    Note("IsFileExist", path);
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0) return true;
    if (errno != ENOENT && errno != ENOTDIR) ThrowSystemError("look for " + path);
    return false;
}

void CopyFile(const std::string& from, const std::string& to) {
    Note("CopyFile", from + " " + to);
    std::error_code failure;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, failure);
    if (failure) throw EZETError("copy " + from + " to " + to + ": " + failure.message(), "");
}

}  // namespace ZET
