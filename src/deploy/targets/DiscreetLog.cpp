#include "deploy/targets/DiscreetLog.h"

#include <utility>

#include "deploy/targets/Render.h"
#include "deploy/targets/Secrets.h"

namespace ZET::Deploy {

DiscreetLog::DiscreetLog(Deployment& product, const std::string& templateName)
    : m_product(product),
      m_templateName(templateName),
      m_former(SetLogFilter([this](ZETLogLevel level) { return IsShown(level); })) {}

DiscreetLog::~DiscreetLog() {
    SetLogFilter(std::move(m_former));
}

bool DiscreetLog::IsShown(ZETLogLevel level) {
    if (level == ZETLogError) return true;
    if (!m_isHidden) {
        m_isHidden = true;  // what is logged while that is found out is about the template, too
        const std::string file = TemplateFile(m_product, m_templateName);
        m_isHidden = !file.empty() && m_product.HostSecrets().Hides(file);
    }
    return !*m_isHidden;
}

}  // namespace ZET::Deploy
