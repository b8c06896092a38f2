#ifndef ZET_IZETCORE_H
#define ZET_IZETCORE_H

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>

#include "zet/ZETInterface.h"

namespace ZET {

/// The core as a module sees it. The order of the operations is part of the contract. A module keeps a plain
/// reference from `module_init` to `module_done` and never deletes the core. Calls must not overlap. An
/// operation that fails throws an `EZETError`. ZETModule.h tells authors of another core how a module finds
/// its services.
class IZETCore {
  public:
    virtual ~IZETCore() = default;

    /// The DNS domain of the host, possibly with a leading "."; valid until a parameter is updated.
    virtual const std::string& GetDomainName() = 0;

    /// The host name of the domain's server; valid until a parameter is updated.
    virtual const std::string& GetServerName() = 0;

    /// Whether files should refer to the domain's services by their DNS service names.
    virtual bool IsServiceDiscovery() = 0;

    /// Takes shared ownership of `interface` and registers it under its name; false if the name is taken.
    virtual bool RegisterInterface(std::shared_ptr<CZETInterface> interface) = 0;

    /// Drops the core's ownership of the interface; false if there is none of that name.
    virtual bool RemoveInterface(const std::string& name) = 0;

    /// The current value of a parameter; empty for an unknown key.
    virtual std::string GetParam(const std::string& key) = 0;

    /// Changes the core's own value of a parameter; no file is written. The module calls it after it has
    /// written the file, so a core must accept whatever it could read back from there. The reference core
    /// throws `EZETCheckError` for what no file can hold: a name with characters other than letters, digits
    /// and "_", or with a leading digit; a value with a line feed or a NUL byte; and a different path as
    /// "ZET_CFG", which has no effect in the file either.
    virtual void UpdateParam(const std::string& key, const std::string& value) = 0;

    /// Whether `pattern`, a Perl-compatible regular expression on bytes, matches anywhere in `subject`.
    /// `reserved` must be null and `flags` 0.
    virtual bool MatchRegEx(const std::string& pattern, const std::string& subject, void* reserved,
                            std::size_t flags) = 0;

    /// Writes the core's settings as lines of the form key=value, and flushes. Everybody may read the file,
    /// so no setting that might be secret is written. If the stream fails, throws an `EZETError` with the
    /// reason; only the caller knows the file's name.
    virtual void WriteStatus(std::ostream& stream) = 0;
};

}  // namespace ZET

#endif
