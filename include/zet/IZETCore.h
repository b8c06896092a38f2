#ifndef ZET_IZETCORE_H
#define ZET_IZETCORE_H

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>

#include "zet/ZETInterface.h"

namespace ZET {

/// The core as a module sees it. The order of the operations is part of the contract. A module keeps a plain
/// reference from `module_init` to `module_done` and never deletes the core. Calls must not overlap. What an
/// operation cannot do it throws as an `EZETError`. Who writes another core finds in ZETModule.h how a module
/// gets at its services.
class IZETCore {
  public:
    virtual ~IZETCore() = default;

    /// The DNS domain of the host, possibly with a leading "."; valid until a parameter is updated.
    virtual const std::string& GetDomainName() = 0;

    /// The host name of the domain's server; valid until a parameter is updated.
    virtual const std::string& GetServerName() = 0;

    /// Whether files are to name the domain's services by their DNS service names.
    virtual bool IsServiceDiscovery() = 0;

    /// Takes shared ownership of `interface` and files it under its name; false when the name is taken.
    virtual bool RegisterInterface(std::shared_ptr<CZETInterface> interface) = 0;

    /// Drops the core's ownership of the interface; false when there is none of that name.
    virtual bool RemoveInterface(const std::string& name) = 0;

    /// The current value of a parameter; empty for an unknown key.
    virtual std::string GetParam(const std::string& key) = 0;

    /// Changes the core's own value of a parameter; no file is written. The module calls it after it has
    /// written the file, so that a core refuses nothing that it could read back from there. The reference
    /// core throws `EZETCheckError` for what no file can hold: a name of other characters than letters,
    /// digits and "_", or with a digit first, and a value with a line feed or a NUL byte; and for another
    /// path as "ZET_CFG", which has no effect in the file either.
    virtual void UpdateParam(const std::string& key, const std::string& value) = 0;

    /// Whether `pattern`, a Perl-compatible regular expression on bytes, is found in `subject`. `reserved`
    /// and `flags` are null and 0.
    virtual bool MatchRegEx(const std::string& pattern, const std::string& subject, void* reserved,
                            std::size_t flags) = 0;

    /// Writes the core's settings as lines of the form key=value, and flushes: into a file that everybody may
    /// read, so none that might be secret. A stream that fails is an `EZETError` with the reason; the file's
    /// name is known to the caller only.
    virtual void WriteStatus(std::ostream& stream) = 0;
};

}  // namespace ZET

#endif
