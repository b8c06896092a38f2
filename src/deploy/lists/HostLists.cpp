#include "deploy/lists/HostLists.h"

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/state/History.h"
#include "deploy/state/Host.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

const TargetList& HostLists::Targets() {
    if (m_targets) return *m_targets;
    const std::string file = TargetListFile(m_host);
    m_targets = IsFileExist(file) ? ReadTargetList(m_host) : TargetList{file, {}, {}, true};
    return *m_targets;
}

const TargetList& HostLists::TargetsAnew() {
    m_byName.reset();
    m_byTemplate.reset();
    m_templatesOfCommits.reset();
    m_targets.reset();
    m_targets = ReadTargetList(m_host);
    return *m_targets;
}

const Target* HostLists::TargetNamed(const std::string& name) {
    if (!m_byName) {
        if (!Targets().isUnderstood) throw Failure(Targets().problems.front());
        std::map<std::string, const Target*> byName;
        for (const Target& target : Targets().targets) {
            if (target.path.empty()) continue;
            try {
                const auto [known, isFirst] =
                    byName.emplace(m_host.HostPaths().Canonical(target.path), &target);
                if (!isFirst && !known->second->IsInForce()) known->second = &target;
            } catch (const Failure&) {
                // No path leads to it, so no file is this target.
            }
        }
        m_byName = std::move(byName);
    }
    const auto found = m_byName->find(name);
    return found == m_byName->end() ? nullptr : found->second;
}

bool HostLists::IsUsable() {
    try {
        return Targets().isUnderstood;
    } catch (const Failure&) {
        return false;
    }
}

const Target* HostLists::EntryOf(const std::string& templateName) {
    if (!m_byTemplate) {
        m_byTemplate.emplace();
        try {
            for (const Target& target : Targets().targets)
                m_byTemplate->emplace(target.templateName, &target);
        } catch (const Failure&) {
            // Whoever needs the list gets the reason.
        }
    }
    const auto found = m_byTemplate->find(templateName);
    return found == m_byTemplate->end() ? nullptr : found->second;
}

std::optional<KnownFile> HostLists::CommittedFile(const std::string& name) {
    // Without a companion, a history that keeps no texts need not be looked at, and an unusable one is
    // reported, but stops nobody.
    History& history = m_host.HostHistory();
    const bool hasCompanion = HasCompanion(name);
    if (!hasCompanion && !history.KeepsTexts()) return std::nullopt;
    Store* const store = hasCompanion ? history.ToLook() : history.ToLookIfUsable();
    if (store == nullptr) return std::nullopt;
    auto known = store->Known(m_host.HostPaths().NameInside(name));
    if (!known) return std::nullopt;
    const bool hasLines = known->kind == FileKind::Edit && known->state.knowledge.base;
    if (!hasLines && !known->state.knowledge.IsCommitted()) return std::nullopt;
    return known;
}

bool HostLists::IsCommitted(const std::string& name) {
    if (!HasCompanion(name)) return false;
    const std::optional<KnownFile> known = CommittedFile(name);
    return known && known->state.knowledge.IsCommitted();
}

/// Finding the files of all targets takes system calls for each of them, so the list is asked only if
/// something stands beside the file. With 1,000 targets, "template process -" makes 355 calls instead of
/// 4,558.
bool HostLists::HasLeft(const std::string& name) {
    return HasCompanion(name) && TargetNamed(name) == nullptr && IsCommitted(name);
}

/// Asks for all templates at once: the store goes through all of its states each time.
bool HostLists::WasCommittedBy(const std::string& templateName) {
    if (!m_templatesOfCommits) {
        Store* const store = m_host.HostHistory().ToLook();
        m_templatesOfCommits = store != nullptr ? store->CommittedTemplates() : std::set<std::string>();
    }
    return m_templatesOfCommits->contains(templateName);
}

std::string HostLists::NameOf(const std::string& path) const {
    return m_host.HostPaths().Canonical(m_host.HostPaths().NameInside(path));
}

}  // namespace ZET::Deploy
