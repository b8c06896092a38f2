#ifndef ZET_CORE_LOADER_H
#define ZET_CORE_LOADER_H

#include <memory>
#include <string>
#include <vector>

#include "Core.h"
#include "zet/ZETModule.h"

namespace ZET {

/// A module in memory, initialised. When it goes, the module is ended: `module_done`, the core's pointers to
/// its interfaces, the shared object.
class LoadedModule {
  public:
    /// Loads and initialises the module of the file `path`. Throws `EZETError` naming the file and what is
    /// wrong with it; nothing of the module is left then. It must have none of the names `taken`.
    LoadedModule(CZETCore& core, const std::string& path, const std::vector<std::string>& taken);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    const std::string& GetName() const { return m_name; }

  private:
    struct RegisteredInterface {
        std::string name;
        /// Set when the module goes; the room for it is taken before, since there may be no memory left then.
        std::weak_ptr<CZETInterface> object;
    };

    struct Closer {
        void operator()(void* handle) const;
    };

    void* EntryPoint(const char* name) const;
    void ReadName(const std::vector<std::string>& taken);
    void Initialise();
    void RequireOwnNames();
    void NoteInterfaces(const std::vector<std::string>& before);
    void Done();
    bool DropInterfaces();
    [[noreturn]] void Refuse(const std::string& reason, const std::string& detail = "") const;

    CZETCore& m_core;
    const std::string m_path;
    std::unique_ptr<void, Closer> m_handle;
    decltype(&get_module_info) m_getInfo = nullptr;
    decltype(&module_init) m_init = nullptr;
    decltype(&module_done) m_done = nullptr;
    std::string m_name;
    std::vector<RegisteredInterface> m_interfaces;
};

}  // namespace ZET

#endif
