#include "zet/ZETHost.h"

#include <memory>
#include <vector>

#include "Core.h"
#include "Loader.h"

namespace ZET {

class CZETHost::Implementation {
  public:
    Implementation() = default;
    explicit Implementation(const std::string& configFile) : m_core(configFile) {}
    ~Implementation() { UnloadModules(); }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    Core::CZETCore& GetCore() { return m_core; }

    void LoadModule(const std::string& path) {
        std::vector<std::string> taken;
        for (const auto& module : m_modules)
            taken.push_back(module->GetName());
        m_modules.push_back(std::make_unique<Core::LoadedModule>(m_core, path, taken));
    }

    void UnloadModules() {
        while (!m_modules.empty())
            m_modules.pop_back();
    }

  private:
    Core::CZETCore m_core;
    std::vector<std::unique_ptr<Core::LoadedModule>> m_modules;
};

CZETHost::CZETHost(const std::string& configFile)
    : m_implementation(std::make_unique<Implementation>(configFile)) {}

CZETHost::CZETHost() : m_implementation(std::make_unique<Implementation>()) {}

CZETHost::~CZETHost() = default;

IZETCore& CZETHost::GetCore() {
    return m_implementation->GetCore();
}

StringMap CZETHost::GetParams() const {
    return m_implementation->GetCore().GetParams();
}

void CZETHost::TakeParameters(const CZETHost& other) {
    m_implementation->GetCore().TakeParameters(other.m_implementation->GetCore());
}

void CZETHost::LoadModule(const std::string& path) {
    m_implementation->LoadModule(path);
}

std::shared_ptr<CZETInterface> CZETHost::FindInterface(const std::string& name) const {
    return m_implementation->GetCore().GetRegistry().Find(name);
}

void CZETHost::UnloadModules() {
    m_implementation->UnloadModules();
}

}  // namespace ZET
