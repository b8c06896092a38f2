#ifndef ZET_CORE_MODULE_CODE_H
#define ZET_CORE_MODULE_CODE_H

#include <memory>
#include <string>

#include "zet/ZETModule.h"

namespace ZET::Core {

/// The code of a module: loaded from its file or, in a program built that way, part of the program.
class ModuleCode {
  public:
    struct EntryPoints {
        decltype(&get_module_info) getInfo = nullptr;
        decltype(&module_init) init = nullptr;
        decltype(&module_done) done = nullptr;
    };

    /// Loads the file `path`. A program with a built-in module selects it by the empty path and can load no
    /// other. Throws `EZETError` naming the file and what is wrong with it.
    explicit ModuleCode(const std::string& path);

    /// Where the code is from, for messages. The part between the last "/" and ".so" names its message
    /// catalogue.
    const std::string& Path() const { return m_path; }

    const EntryPoints& Entries() const { return m_entries; }

    /// Equal for two objects with the same code, and for no others.
    const void* Identity() const { return m_handle.get(); }

    /// Keeps the code in memory until the process ends.
    void Keep() { static_cast<void>(m_handle.release()); }

    /// Throws: the module cannot be used.
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

/// `error` is the `errno` of a failed system call; 0 if none.
[[noreturn]] void RefuseModule(const std::string& path, const std::string& reason, const std::string& detail,
                               int error = 0);

}  // namespace ZET::Core

#endif
