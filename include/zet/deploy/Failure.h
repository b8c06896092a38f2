#ifndef ZET_DEPLOY_FAILURE_H
#define ZET_DEPLOY_FAILURE_H

#include <stdexcept>
#include <string>

#include "zet/ZETApi.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The caller asked for something that makes no sense.
class ZET_API UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~UsageError() override;
};

/// An operation failed. Holds the known facts; `what()` puts them into words: what, where and the remedy.
/// That is one line unless a file's name contains a line feed: names appear with all their bytes, and whoever
/// displays them must make them printable.
class ZET_API Failure : public std::runtime_error {
  public:
    /// Worded by `Problem::Describe`. `errorNumber` is the system's `errno`; 0 if none.
    explicit Failure(const Problem& facts, int errorNumber = 0);

    /// With its own wording, for example with more context.
    Failure(const std::string& words, const Problem& facts, int errorNumber = 0);

    ~Failure() override;

    /// The file, the place in it, what is wrong and the remedy; each is empty or 0 if unknown.
    const Problem& Facts() const { return m_facts; }

    /// The system's `errno` if a system call failed; otherwise 0.
    int ErrorNumber() const { return m_errorNumber; }

    /// Lines to show below the message: output of another program, or a list.
    const std::string& Lines() const { return m_facts.output; }

  private:
    Problem m_facts;
    int m_errorNumber = 0;
};

/// One of the product's own files holds something that the product cannot have written.
class ZET_API Damage : public Failure {
  public:
    using Failure::Failure;
    ~Damage() override;
};

/// The user, the system or the observer ended a call before it was done. It is no `Failure` because after a
/// `Failure` a call may go on with the rest.
class ZET_API Interrupted : public std::runtime_error {
  public:
    /// Worded by `Problem::Describe`.
    explicit Interrupted(const Problem& facts);
    ~Interrupted() override;

    /// What ended the call, and the remedy, if any.
    const Problem& Facts() const { return m_facts; }

  private:
    Problem m_facts;
};

}  // namespace ZET::Deploy

#endif
