#ifndef ZET_DEPLOY_PRODUCT_H
#define ZET_DEPLOY_PRODUCT_H

#include <memory>
#include <string>

#include "zet/ZETApi.h"
#include "zet/deploy/Failure.h"
#include "zet/deploy/Observer.h"
#include "zet/deploy/Options.h"

namespace ZET::Deploy {

/// The product on a host: the core with its parameters, the module loaded into it, and where the host's files
/// are. All other calls of the library are made on one. One at a time in a process, since the module serves
/// one host at a time, and the log belongs to the process; one thread at a time.
///
/// It may live as long as the program does. Every call finds the host as it is then: it reads the main file,
/// the files of defaults and values, and the lists again, and looks for directories by their names, none of
/// which is held after it. So every call may fail as the constructor does, and what another program committed
/// or set is there for the next call. Only a plan is of the time when it was made, and with it the calls made
/// until its commit (Plan.h); and a look that an observer takes within a call is a part of that.
///
/// While a call plans or writes, SIGINT, SIGTERM and SIGHUP end it between two files with an `Interrupted`,
/// and no call after it; what is temporary is cleared away. One that comes after the last file reaches the
/// program's own handler when the call ends, or ends the program as it would have. Calls that write wait for
/// each other, also in other processes, for 30 s at most.
///
/// Every call throws `UsageError` for what makes no sense, `Failure` for what could not be done (also where
/// the core or the module could not do it; it has file, line, remedy and `errno` apart), `Interrupted` where
/// it was asked to end, and may throw `std::bad_alloc`; where it says nothing else, nothing was changed then.
///
/// Problems, failures, remarks and what an observer is told are in the language that the program has set for
/// LC_MESSAGES with `setlocale`, English unless it has: who wants to know what happened asks the fields, and
/// no words.
class ZET_API Product {
  public:
    /// Reads the parameters from `configFile` and loads the module, which stays. A file that is missing or
    /// broken, and a module that cannot be loaded, is a `Failure` that names it. A relative path, and `root`,
    /// are looked up once: the program may go to another directory then. `observer` is told what happens as
    /// long as the object lives, and must live longer; null: nobody is.
    explicit Product(const std::string& configFile, const Options& options = Options(),
                     Observer* observer = nullptr);
    ~Product();
    Product(const Product&) = delete;
    Product& operator=(const Product&) = delete;

    /// What the library itself works on.
    class Implementation;
    Implementation& Parts() { return *m_implementation; }

  private:
    std::unique_ptr<Implementation> m_implementation;
};

}  // namespace ZET::Deploy

#endif
