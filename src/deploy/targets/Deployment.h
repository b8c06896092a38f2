#ifndef ZET_DEPLOYMENT_H
#define ZET_DEPLOYMENT_H

#include <optional>
#include <string>

#include "deploy/lists/HostLists.h"
#include "deploy/state/HostProduct.h"
#include "deploy/targets/Secrets.h"

namespace ZET::Deploy {

/// The product at work on a host, with what is known about the host's files: each list is read once,
/// until it begins anew.
class Deployment : public HostProduct {
  public:
    Deployment(const std::string& configFile, const Options& options, Observer& observer)
        : HostProduct(configFile, options, observer) {
        LookAnew();
    }

    HostLists& Lists() { return *m_lists; }
    Secrets& HostSecrets() { return *m_secrets; }

    /// As the list of targets says; without a list that can be read, nobody: whoever needs it is told why.
    std::string TrustedAt(const std::string& path) override;

    bool IsPrivate(const std::string& path) override { return m_secrets->IsPrivate(path); }

    void BeginAnew() override;

  private:
    void LookAnew();

    std::optional<HostLists> m_lists;
    std::optional<Secrets> m_secrets;
};

}  // namespace ZET::Deploy

#endif
