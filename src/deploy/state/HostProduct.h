#ifndef ZET_HOST_PRODUCT_H
#define ZET_HOST_PRODUCT_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/state/Host.h"
#include "zet/IZETConfig.h"

namespace ZET::Deploy {

/// The product on a host, with the module loaded into the core.
class HostProduct : public Host {
  public:
    /// Throws if the module is missing or broken.
    HostProduct(const std::string& configFile, const Options& options, Observer& observer);

    IZETConfig& Config() { return *m_config; }

    /// What each placeholder stands for: the module's values, and the host's own.
    StringMap& TemplateValues();

    std::optional<std::string> Expanded(const std::string& value) override;

    /// To be called when parameters have changed.
    void ForgetValues();

    void BeginAnew() override;

    /// Empty if the module is built into the program.
    const std::string& ModuleFile() const { return m_moduleFile; }

    /// The paths for the module, which is the host's own under any root.
    const Paths& ModulePaths() const { return HostPaths().HasRoot() ? m_ownPaths : HostPaths(); }

  private:
    void LoadModule();

    const std::string m_moduleFile;
    Paths m_ownPaths{""};
    std::shared_ptr<IZETConfig> m_config;
    std::optional<StringMap> m_templateValues;
};

}  // namespace ZET::Deploy

#endif
