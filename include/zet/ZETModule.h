#ifndef ZET_ZETMODULE_H
#define ZET_ZETMODULE_H

#include <cstdint>

#include "zet/IZETCore.h"
#include "zet/ZETApi.h"

namespace ZET {

/// Describes a module to its host, and the host to the module. Each field is one machine word wide.
struct ZETModuleRecord {
    std::uintptr_t version;   ///< major × 65536 + minor × 256 + patch; major 1 is this contract
    const char* name;         ///< also the name of the interface that the module registers
    const char* versionText;  ///< the version in words, "1.2.3"
    alignas(std::uintptr_t) std::uint32_t type;  ///< 0: a host, 1: a module
    const char* description;  ///< for the user, translated; null until the module is queried
    const void* reserved;     ///< null
};

}  // namespace ZET

/// The three functions that a module exports. Calls must not overlap; the order is `get_module_info`,
/// `module_init`, and `module_done` before the module is unloaded. A module has one state in a process: it
/// serves one core at a time, and may serve another one after `module_done`. `module_done` is called only
/// after a `module_init` that returned true.
///
/// A module finds the core's services (log, errors, formatter, file helpers, base of the interfaces) in the
/// process, by the names of the library that it was linked to: "libzet-core.so.1", version node ZET_CORE_1.
/// Another core is a library of that name and node that the host is linked to; or it is built into a program
/// that exports the services (linked with "-rdynamic"), which take precedence over those of the reference
/// library. The module still needs that library, and without the option it would silently use it.
extern "C" {

/// The module's record, which lives as long as the module; null, with a message on standard error, if the
/// module does not serve a host of this type (`host->type`, the only field that is read).
ZET_API const ZET::ZETModuleRecord* get_module_info(const ZET::ZETModuleRecord* host);

/// Creates the module's interface object and registers it with the core, which then owns it. Returns true if
/// the module is, or already was, initialised. An exception of the core passes through and leaves the module
/// uninitialised.
ZET_API bool module_init(ZET::IZETCore& core);

/// Has the core remove the module's interface; `module_init` may be called again afterwards.
ZET_API void module_done(ZET::IZETCore& core);
}

#endif
