#ifndef ZET_DEPLOY_FAILURE_H
#define ZET_DEPLOY_FAILURE_H

#include <stdexcept>
#include <string>

#include "zet/ZETApi.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The caller asks for something that makes no sense.
class ZET_API UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~UsageError() override;
};

/// What was set out to be done failed. It keeps what is known of that, and `what()` has it in words: what,
/// where and the remedy. That is one line unless the name of a file holds a line feed: names stand there with
/// all their bytes, and who shows them makes them printable.
class ZET_API Failure : public std::runtime_error {
  public:
    /// In the words of `Problem::Describe`. `errorNumber` is the system's `errno`; 0: none.
    explicit Failure(const Problem& facts, int errorNumber = 0);

    /// In other words, such as the same with more around it.
    Failure(const std::string& words, const Problem& facts, int errorNumber = 0);

    ~Failure() override;

    /// The file, the place in it, what is wrong and the remedy, each empty or 0 where there is none.
    const Problem& Facts() const { return m_facts; }

    /// The system's `errno`, where a call of it failed; 0: none did.
    int ErrorNumber() const { return m_errorNumber; }

    /// What stands below the message: what another program printed, or a list.
    const std::string& Lines() const { return m_facts.output; }

  private:
    Problem m_facts;
    int m_errorNumber = 0;
};

/// A file of the product's that cannot be what it wrote.
class ZET_API Damage : public Failure {
  public:
    using Failure::Failure;
    ~Damage() override;
};

/// The user, the system or the observer asked a call to end before it was done. It is no `Failure`, after
/// which a call may go on with the rest.
class ZET_API Interrupted : public std::runtime_error {
  public:
    /// In the words of `Problem::Describe`.
    explicit Interrupted(const Problem& facts);
    ~Interrupted() override;

    /// What ended the call, and the remedy.
    const Problem& Facts() const { return m_facts; }

  private:
    Problem m_facts;
};

}  // namespace ZET::Deploy

#endif
