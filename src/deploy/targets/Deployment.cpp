#include "deploy/targets/Deployment.h"

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

std::string Deployment::TrustedAt(const std::string& path) {
    try {
        const Target* const target = m_lists.TargetNamed(m_lists.NameOf(path));
        return target == nullptr ? "" : target->trusted;
    } catch (const Failure&) {
        return "";
    }
}

}  // namespace ZET::Deploy
