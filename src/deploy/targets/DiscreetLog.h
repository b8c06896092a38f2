#ifndef ZET_DISCREET_LOG_H
#define ZET_DISCREET_LOG_H

#include <optional>
#include <string>

#include "deploy/state/Host.h"
#include "deploy/targets/Secrets.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

/// While the object lives, only errors are logged of a template that is not for everybody: the module's
/// warnings name its placeholders, and others read the log, too. Who may see the template is found out at the
/// first warning, since that takes reading it.
class DiscreetLog {
  public:
    DiscreetLog(Host& host, Secrets& secrets, const std::string& templateName);
    ~DiscreetLog();
    DiscreetLog(const DiscreetLog&) = delete;
    DiscreetLog& operator=(const DiscreetLog&) = delete;

  private:
    bool IsShown(ZETLogLevel level);

    Host& m_host;
    Secrets& m_secrets;
    const std::string& m_templateName;
    std::optional<bool> m_isHidden;
    ZETLogFilter m_former;
};

}  // namespace ZET::Deploy

#endif
