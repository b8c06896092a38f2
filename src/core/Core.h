#ifndef ZET_CORE_CORE_H
#define ZET_CORE_CORE_H

#include <string>

#include "Parameters.h"
#include "RegEx.h"
#include "Registry.h"
#include "Sync.h"
#include "zet/IZETCore.h"
#include "zet/ZETTypes.h"

namespace ZET::Core {

/// The core as modules see it; each group of operations is a service of its own.
class CZETCore final : public IZETCore {
  public:
    /// All parameters have their defaults.
    CZETCore();

    /// Reads the parameters from `configFile`.
    explicit CZETCore(const std::string& configFile);

    const std::string& GetDomainName() override;
    const std::string& GetServerName() override;
    bool IsServiceDiscovery() override;
    bool RegisterInterface(std::shared_ptr<CZETInterface> interface) override;
    bool RemoveInterface(const std::string& name) override;
    std::string GetParam(const std::string& key) override;
    void UpdateParam(const std::string& key, const std::string& value) override;
    bool MatchRegEx(const std::string& pattern, const std::string& subject, void* reserved,
                    std::size_t flags) override;
    void WriteStatus(std::ostream& stream) override;

    Registry& GetRegistry() { return m_registry; }
    StringMap GetParams() const { return m_parameters.All(); }
    void TakeParameters(const CZETCore& other);

  private:
    Parameters m_parameters;
    SyncVote m_syncing;
    RegEx m_regEx;
    Registry m_registry;  // last, because an interface may still use the other services in its destructor
};

}  // namespace ZET::Core

#endif
