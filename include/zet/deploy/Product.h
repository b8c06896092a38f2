#ifndef ZET_DEPLOY_PRODUCT_H
#define ZET_DEPLOY_PRODUCT_H

#include <memory>
#include <string>

#include "zet/ZETApi.h"
#include "zet/deploy/Failure.h"
#include "zet/deploy/Observer.h"
#include "zet/deploy/Options.h"

namespace ZET::Deploy {

/// The product on a host: the core with its parameters, the module loaded into it, and the locations of the
/// host's files. All other calls of the library need one. There can be one at a time in a process, since the
/// module serves one host at a time and the log belongs to the process. One thread at a time may use it.
///
/// It may live as long as the program. Every call finds the host as it is at that time: it reads the main
/// file, the files of defaults and values, and the lists again, and looks up directories by their names
/// without keeping them open. So every call may fail as the constructor does, and sees what another program
/// committed or set. Only a plan belongs to the time when it was made, and so do the calls made until its
/// commit (see Plan.h); a lookup by an observer within a call is part of that call.
///
/// While a call plans or writes, SIGINT, SIGTERM and SIGHUP end it between two files with an `Interrupted`,
/// and temporary files are removed; later calls are not affected. A signal after the last file reaches the
/// program's own handler when the call ends, or ends the program as it normally would. Calls that write wait
/// for each other, also across processes, for at most 30 s.
///
/// Every call throws `UsageError` for a request that makes no sense, `Failure` for one that could not be
/// carried out (also by the core or the module; file, line, remedy and `errno` are separate fields),
/// `Interrupted` if it was asked to end, and possibly `std::bad_alloc`. Unless a call says otherwise, nothing
/// was changed then.
///
/// Problems, failures, remarks and reports to an observer are in the language that the program has set for
/// LC_MESSAGES with `setlocale`, otherwise in English. Programs should evaluate the fields, not the words.
class ZET_API Product {
  public:
    /// Reads the parameters from `configFile` and loads the module, which stays loaded. A missing or broken
    /// file, or a module that cannot be loaded, is a `Failure` that names it. A relative path, and `root`,
    /// are resolved once: the program may change its directory afterwards. `observer` receives reports as
    /// long as the object lives and must outlive it; null for none.
    explicit Product(const std::string& configFile, const Options& options = Options(),
                     Observer* observer = nullptr);
    ~Product();
    Product(const Product&) = delete;
    Product& operator=(const Product&) = delete;

    /// For the library's own use.
    class Implementation;
    Implementation& Parts() { return *m_implementation; }

  private:
    std::unique_ptr<Implementation> m_implementation;
};

}  // namespace ZET::Deploy

#endif
