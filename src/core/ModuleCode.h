#ifndef ZET_CORE_MODULE_CODE_H
#define ZET_CORE_MODULE_CODE_H

#include <memory>
#include <string>

#include "zet/ZETModule.h"

namespace ZET::Core {

/// The code of a module: brought in from its file or, in a program that is built so, a part of the program.
class ModuleCode {
  public:
    struct EntryPoints {
        decltype(&get_module_info) getInfo = nullptr;
        decltype(&module_init) init = nullptr;
        decltype(&module_done) done = nullptr;
    };

    /// That of the file `path`; of a program that has one built in, the empty path names it, and no other can
    /// be loaded. Throws `EZETError` naming the file and what is wrong with it.
    explicit ModuleCode(const std::string& path);

    /// Where it is from, for messages; behind the last "/" and without ".so", its message catalogue.
    const std::string& Path() const { return m_path; }

    const EntryPoints& Entries() const { return m_entries; }

    /// What two of the same code have in common, and nobody else has.
    const void* Identity() const { return m_handle.get(); }

    /// It goes with the process, and not with this.
    void Keep() { static_cast<void>(m_handle.release()); }

    /// The module cannot be used.
    [[noreturn]] void Refuse(const std::string& reason, const std::string& detail = "") const;

  private:
    struct Closer {
        void operator()(void* handle) const;
    };

    void* EntryPoint(const char* name) const;

    const std::string m_path;
    std::unique_ptr<void, Closer> m_handle;
    EntryPoints m_entries;
};

/// `error` is the reason as `errno` has it, where it is one of the system.
[[noreturn]] void RefuseModule(const std::string& path, const std::string& reason, const std::string& detail,
                               int error = 0);

}  // namespace ZET::Core

#endif
