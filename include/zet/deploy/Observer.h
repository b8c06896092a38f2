#ifndef ZET_DEPLOY_OBSERVER_H
#define ZET_DEPLOY_OBSERVER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Receives reports of a call's work, in the thread that made the call. Each text is one line that names
/// what, where and the remedy; control characters in the names of files remain in it. Log records of the core
/// and the module arrive as errors, warnings and details, with control characters as escape sequences. The
/// functions may make calls that only read the product; these belong to the call. They must not call anything
/// that writes.
class ZET_API Observer {
  public:
    virtual ~Observer();

    /// Detailed progress.
    virtual void Detail(const std::string&) {}

    /// Something that the user may want to know.
    virtual void Remark(const std::string&) {}

    /// Something that the user should look at, though the call goes on.
    virtual void Warning(const std::string&) {}

    /// A failure after which the call goes on with the rest; `lines` are another program's output, shown
    /// below it.
    virtual void Error(const std::string& /*text*/, const std::string& /*lines*/ = "") {}

    /// `done` of `total` files are finished in this step; a call may have several steps.
    virtual void Progress(std::size_t /*done*/, std::size_t /*total*/) {}

    /// One file is finished.
    virtual void Done(const FileOutcome&) {}

    /// The number of the call's entry in the history.
    virtual void Recorded(std::int64_t /*entry*/) {}

    /// The services to restart, since they do not notice the changes by themselves; called at the end, even
    /// if the call broke off.
    virtual void Restarts(const std::vector<std::string>& /*services*/) {}

    /// As `Restarts`, for other services, which only need to read their files again.
    virtual void Reloads(const std::vector<std::string>& /*services*/) {}

    /// Asked between two files: true ends the call there with an `Interrupted`. What was done before stays.
    virtual bool IsCancelled() { return false; }
};

}  // namespace ZET::Deploy

#endif
