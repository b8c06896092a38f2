#ifndef ZET_DEPLOY_OBSERVER_H
#define ZET_DEPLOY_OBSERVER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Is told what a call does while it works, by the thread that made the call. Each text is one line, which
/// may hold control characters of files and names; it names what, where and the remedy. What the core and the
/// module log comes as errors, warnings and details, with control characters as escape sequences. The
/// functions may look at the product, as a part of the call, and call nothing that writes.
class ZET_API Observer {
  public:
    virtual ~Observer();

    /// Progress, for who wants to know it all.
    virtual void Detail(const std::string&) {}

    /// What the reader may want to know.
    virtual void Remark(const std::string&) {}

    /// What he should look at, though the call goes on.
    virtual void Warning(const std::string&) {}

    /// What failed, though the call goes on with the rest; `lines` are somebody else's, below it.
    virtual void Error(const std::string& /*text*/, const std::string& /*lines*/ = "") {}

    /// Of `total` files, `done` are done with in this step of the work; there may be several steps.
    virtual void Progress(std::size_t /*done*/, std::size_t /*total*/) {}

    /// One file is done with.
    virtual void Done(const FileOutcome&) {}

    /// The number under which the history has what the call did.
    virtual void Recorded(std::int64_t /*entry*/) {}

    /// The services that do not notice by themselves what was changed; at the end, also where it broke off.
    virtual void Restarts(const std::vector<std::string>& /*services*/) {}

    /// Likewise those for which it is enough to read their files again.
    virtual void Reloads(const std::vector<std::string>& /*services*/) {}

    /// Asked between two files: true ends the call there with an `Interrupted`, what was done before it
    /// stays.
    virtual bool IsCancelled() { return false; }
};

}  // namespace ZET::Deploy

#endif
