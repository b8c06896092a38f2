#ifndef ZET_CORE_LOADER_H
#define ZET_CORE_LOADER_H

#include <memory>
#include <string>
#include <vector>

#include "Core.h"
#include "ModuleCode.h"

namespace ZET::Core {

/// An initialised module. Its destructor calls `module_done` and drops the core's pointers to its interfaces.
/// The code stays in memory, since its objects may still be held elsewhere.
class LoadedModule {
  public:
    /// Loads and initialises the module in the file `path`, which must have none of the names `taken`. Throws
    /// `EZETError` naming the file and what is wrong with it; a module that was already initialised is then
    /// ended.
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

    /// Reserves a module, which has one state in the process, for one host.
    class Claim {
      public:
        Claim() = default;
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;

        /// False if another host has the module.
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
    std::vector<std::string> m_lost;  ///< names of its interfaces that belong to another owner by now
};

}  // namespace ZET::Core

#endif
