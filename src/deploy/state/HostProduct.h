#ifndef ZET_HOST_PRODUCT_H
#define ZET_HOST_PRODUCT_H

#include <memory>
#include <string>

#include "deploy/host/Paths.h"
#include "zet/IZETConfig.h"
#include "zet/ZETHost.h"
#include "zet/deploy/Observer.h"
#include "zet/deploy/Options.h"

namespace ZET::Deploy {

/// The product on a host: the core with its parameters and the module loaded into it, and where the host's
/// files are.
class HostProduct {
  public:
    /// Reads the parameters and loads the module. A configuration file or module that is missing or broken
    /// throws. `observer` is told what happens as long as the object lives.
    HostProduct(const std::string& configFile, const Options& options, Observer& observer);
    virtual ~HostProduct();
    HostProduct(const HostProduct&) = delete;
    HostProduct& operator=(const HostProduct&) = delete;

    /// The main configuration file, as the caller named it.
    const std::string& ConfigFile() const { return m_configFile; }
    const Options& Wanted() const { return m_options; }
    const std::string& Role() const { return m_options.role; }
    Observer& Out() { return m_observer; }
    IZETConfig& Config() { return *m_config; }
    IZETCore& Core() { return m_host->GetCore(); }
    const Paths& HostPaths() const { return m_paths; }
    const std::string& ModuleFile() const { return m_moduleFile; }

    /// Where the module is, which is the host's own under any root.
    const Paths& ModulePaths() const { return m_paths.HasRoot() ? m_ownPaths : m_paths; }

    /// A parameter; those that name directories of the product are paths that can be opened.
    std::string Param(const std::string& key) { return Core().GetParam(key); }

    /// Every parameter with its value.
    StringMap Params() const { return m_host->GetParams(); }

    /// The path under which a file given by the caller can be opened: under the root, links followed.
    std::string FilePath(const std::string& file) const { return m_paths.Resolved(file); }

    /// Throws `Interrupted` when a signal came, or the observer wants no more: between two files.
    void RequireGoOn();

    /// The user whose directories count as root's for this file; empty: none.
    virtual std::string TrustedAt(const std::string& /*path*/) { return ""; }

  private:
    /// Without a configuration file where the caller can do without and none is there.
    void StartHost();

    /// A `Failure` unless each parameter that has to names a directory: an empty one would stand for the
    /// root.
    void RequireDirectories();
    void LoadModule();

    const std::string m_configFile;
    const Options m_options;
    Observer& m_observer;
    const std::string m_moduleFile;
    Paths m_paths;
    Paths m_ownPaths{""};
    std::unique_ptr<CZETHost> m_host;
    std::shared_ptr<IZETConfig> m_config;
};

/// Whether the parameter names a directory of the product's own.
bool IsOwnDirectory(const std::string& key);

}  // namespace ZET::Deploy

#endif
