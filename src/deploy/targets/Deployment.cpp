#include "deploy/targets/Deployment.h"

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

void Deployment::LookAnew() {
    m_lists.emplace(*this);
    m_secrets.emplace(*this, *m_lists);
}

void Deployment::BeginAnew() {
    HostProduct::BeginAnew();
    LookAnew();
}

std::string Deployment::TrustedAt(const std::string& path) {
    try {
        const Target* const target = m_lists->TargetOf(path);
        return target == nullptr ? "" : target->trusted;
    } catch (const Failure&) {
        return "";
    }
}

}  // namespace ZET::Deploy
