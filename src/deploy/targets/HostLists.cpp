#include "deploy/targets/HostLists.h"

#include "deploy/host/Failure.h"
#include "deploy/state/HostProduct.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/StateDirectory.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

const TargetList& HostLists::Targets() {
    if (m_targets) return *m_targets;
    const std::string file = TargetListFile(m_product);
    m_targets = IsFileExist(file) ? ReadTargetList(m_product) : TargetList{file, {}, {}, true};
    return *m_targets;
}

const Target* HostLists::TargetNamed(const std::string& name) {
    if (!m_byName) {
        if (!Targets().isUnderstood) throw Failure(Targets().problems.front().Describe());
        std::map<std::string, const Target*> byName;
        for (const Target& target : Targets().targets) {
            if (target.path.empty()) continue;
            try {
                byName.emplace(m_product.HostPaths().Canonical(target.path), &target);
            } catch (const Failure&) {
                // No way leads to it, so no file is this target.
            }
        }
        m_byName = std::move(byName);
    }
    const auto found = m_byName->find(name);
    return found == m_byName->end() ? nullptr : found->second;
}

const std::set<std::string>& HostLists::Committed() {
    if (m_committed) return *m_committed;
    std::set<std::string> names;
    for (const char* role : {kServer, kClient}) {
        for (const std::string& path : Manifest(m_product, role).Paths())
            names.insert(NameOf(path));
    }
    m_committed = std::move(names);
    return *m_committed;
}

const Target* HostLists::CommittedTarget(const std::string& path) {
    if (Committed().empty()) return nullptr;
    const std::string name = NameOf(path);
    return Committed().count(name) == 0 ? nullptr : TargetNamed(name);
}

std::string HostLists::NameOf(const std::string& path) const {
    return m_product.HostPaths().Canonical(m_product.HostPaths().NameInside(path));
}

}  // namespace ZET::Deploy
