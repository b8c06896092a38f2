#ifndef ZET_DISCREET_LOG_H
#define ZET_DISCREET_LOG_H

#include <optional>
#include <string>

#include "deploy/state/Host.h"
#include "deploy/targets/Secrets.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

/// For as long as the object lives, the log tells errors only where the template is not for everybody: the
/// module's warnings name the placeholders of the template that it renders, and others read the log, too.
/// Whose eyes the template is for is found out at the first warning, since that reads the template.
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
