#ifndef ZET_CORE_LOADER_H
#define ZET_CORE_LOADER_H

#include <memory>
#include <string>
#include <vector>

#include "Core.h"
#include "ModuleCode.h"

namespace ZET::Core {

/// A module, initialised. When it goes, the module is ended: `module_done`, the core's pointers to its
/// interfaces. Its code stays in memory, since nobody knows who still holds an object of it.
class LoadedModule {
  public:
    /// Loads and initialises the module of the file `path`. Throws `EZETError` naming the file and what is
    /// wrong with it; the module is ended then, if it was initialised. It must have none of the names
    /// `taken`.
    LoadedModule(CZETCore& core, const std::string& path, const std::vector<std::string>& taken);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    const std::string& GetName() const { return m_name; }

  private:
    struct RegisteredInterface {
        std::string name;
        std::weak_ptr<CZETInterface> object;
    };

    /// A module keeps one state for the process: it serves one host at a time.
    class Claim {
      public:
        Claim() = default;
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;

        /// False when another host has the module.
        bool Take(const void* module);

      private:
        const void* m_module = nullptr;
    };

    void BindCatalogue() const;
    void ReadName(const std::vector<std::string>& taken);
    void Initialise();
    void RequireInterfaces();
    void NoteInterfaces(const std::vector<std::string>& before);
    void Done();
    bool DropInterfaces();
    [[noreturn]] void Refuse(const std::string& reason, const std::string& detail = "") const;

    CZETCore& m_core;
    ModuleCode m_code;
    std::string m_name;
    Claim m_claim;
    std::vector<RegisteredInterface> m_interfaces;
    std::vector<std::string> m_lost;  ///< names of them that somebody else's interface has now
};

}  // namespace ZET::Core

#endif
