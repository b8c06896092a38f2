#ifndef ZET_DEPLOYMENT_H
#define ZET_DEPLOYMENT_H

#include <optional>
#include <string>

#include "deploy/lists/HostLists.h"
#include "deploy/state/HostProduct.h"
#include "deploy/targets/Secrets.h"

namespace ZET::Deploy {

/// The product at work on a host, with what is known of the host's files. Each list is read once, until
/// `BeginAnew`.
class Deployment : public HostProduct {
  public:
    Deployment(const std::string& configFile, const Options& options, Observer& observer)
        : HostProduct(configFile, options, observer) {
        LookAnew();
    }

    HostLists& Lists() { return *m_lists; }
    Secrets& HostSecrets() { return *m_secrets; }

    /// The user whom the list of targets trusts at this path. Empty if the list cannot be read: whoever needs
    /// it gets the reason.
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
