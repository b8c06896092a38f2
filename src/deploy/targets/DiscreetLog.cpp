#include "deploy/targets/DiscreetLog.h"

#include <utility>

#include "deploy/targets/TemplateFiles.h"

namespace ZET::Deploy {

DiscreetLog::DiscreetLog(Host& host, Secrets& secrets, const std::string& templateName)
    : m_host(host),
      m_secrets(secrets),
      m_templateName(templateName),
      m_former(SetLogFilter([this](ZETLogLevel level) { return IsShown(level); })) {}

DiscreetLog::~DiscreetLog() {
    SetLogFilter(std::move(m_former));
}

bool DiscreetLog::IsShown(ZETLogLevel level) {
    if (level == ZETLogError) return true;
    if (!m_isHidden) {
        m_isHidden = true;  // what is logged while finding out is about the template, too
        const std::string file = TemplateFile(m_host, m_templateName);
        m_isHidden = !file.empty() && m_secrets.Hides(file);
    }
    return !*m_isHidden;
}

}  // namespace ZET::Deploy
