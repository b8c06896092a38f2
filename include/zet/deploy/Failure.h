#ifndef ZET_DEPLOY_FAILURE_H
#define ZET_DEPLOY_FAILURE_H

#include <stdexcept>
#include <string>
#include <utility>

#include "zet/ZETApi.h"

namespace ZET::Deploy {

/// The caller asks for something that makes no sense.
class ZET_API UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~UsageError() override;
};

/// What was set out to be done failed. The message names what, where and the remedy.
class ZET_API Failure : public std::runtime_error {
  public:
    /// `lines` are below the message: what another program printed, or a list.
    explicit Failure(const std::string& message, std::string lines = "")
        : std::runtime_error(message), m_lines(std::move(lines)) {}

    ~Failure() override;

    const std::string& Lines() const { return m_lines; }

  private:
    std::string m_lines;
};

/// A file of the product's that cannot be what it wrote.
class ZET_API Damage : public Failure {
  public:
    using Failure::Failure;
    ~Damage() override;
};

/// The user, the system or the observer asked a call to end before it was done.
class ZET_API Interrupted : public Failure {
  public:
    using Failure::Failure;
    ~Interrupted() override;
};

}  // namespace ZET::Deploy

#endif
