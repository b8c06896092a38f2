#ifndef ZET_FAILURE_H
#define ZET_FAILURE_H

#include <stdexcept>
#include <string>
#include <utility>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The caller asks for something that makes no sense.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What was set out to be done failed. The message names what, where and the remedy.
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

/// A failure with the file, told as one problem among others.
Problem ProblemOf(const std::string& file, const Failure& failure);

}  // namespace ZET::Deploy

#endif
