#ifndef ZET_ZETERRORS_H
#define ZET_ZETERRORS_H

#include <cstddef>
#include <exception>
#include <string>

#include "zet/ZETApi.h"

namespace ZET {

/// An operation failed. Thrown by value and caught by reference. It is defined in the core with default
/// visibility because it crosses the boundaries of shared objects.
class ZET_API EZETError : public std::exception {
  public:
    /// `message` is for the user: translated and complete. `detail` adds to it and may be empty.
    EZETError(const std::string& message, const std::string& detail);
    ~EZETError() override;

    /// The message; valid as long as the exception.
    const char* what() const noexcept override;

    const std::string& GetMessage() const noexcept;
    const std::string& GetDetail() const noexcept;

    /// Where the error was raised; empty and 0 if unknown, as for all errors but `EZETInternalError`.
    const std::string& GetSource() const noexcept;
    const std::string& GetFunction() const noexcept;
    std::size_t GetLine() const noexcept;

  protected:
    EZETError(const std::string& message, const std::string& detail, const std::string& source,
              const std::string& function, std::size_t line);

  private:
    std::string m_message;
    std::string m_detail;
    std::string m_source;
    std::string m_function;
    std::size_t m_line = 0;
};

/// The caller passed a bad argument, for example an empty name.
class ZET_API EZETCheckError : public EZETError {
  public:
    EZETCheckError(const std::string& message, const std::string& detail);
    ~EZETCheckError() override;
};

/// A value that must not occur: an internal contradiction.
class ZET_API EZETInternalError : public EZETError {
  public:
    EZETInternalError(const std::string& message, const std::string& detail, const std::string& source,
                      const std::string& function, std::size_t line);
    ~EZETInternalError() override;
};

}  // namespace ZET

#endif
