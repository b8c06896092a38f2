#include "zet/ZETErrors.h"

#include "zet/ZETHost.h"

namespace ZET {

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

EZETHostError::EZETHostError(const std::string& message, const std::string& detail, const ZETCause& cause)
    : EZETError(message, detail), m_cause(cause) {}

EZETHostError::~EZETHostError() = default;

const ZETCause& EZETHostError::GetCause() const noexcept {
    return m_cause;
}

int EZETHostError::GetErrorNumber() const noexcept {
    return m_cause.errorNumber;
}

}  // namespace ZET
