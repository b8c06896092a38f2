#ifndef ZET_EXIT_STATUS_H
#define ZET_EXIT_STATUS_H

#include <stdexcept>
#include <string>
#include <utility>

namespace ZET {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUse = 2;
inline constexpr int kNotInSync = 3;  ///< also: a dry run would change something

/// The command line asks for something that makes no sense; the program ends with `kWrongUse`.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What the command set out to do failed; the program ends with `kFailed`. The message names what, where and
/// the remedy.
class Failure : public std::runtime_error {
  public:
    /// `lines` are below the message: what another program printed, or a list.
    explicit Failure(const std::string& message, std::string lines = "")
        : std::runtime_error(message), m_lines(std::move(lines)) {}

    const std::string& Lines() const { return m_lines; }

  private:
    std::string m_lines;
};

/// A file of the product's that cannot be what it wrote.
class Damage : public Failure {
  public:
    using Failure::Failure;
};

}  // namespace ZET

#endif
