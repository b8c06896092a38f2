#include "Core.h"

#include <utility>

#include "Catalogues.h"
#include "Message.h"
#include "StatusWriter.h"

namespace ZET::Core {

namespace {

/// Binds the message catalogue before the first message can arise.
const std::string& WithCatalogue(const std::string& configFile) {
    BindCatalogue(kOwnCatalogue);
    return configFile;
}

}  // namespace

CZETCore::CZETCore() {
    BindCatalogue(kOwnCatalogue);
    m_syncing.Set(m_parameters.Sync());
}

CZETCore::CZETCore(const std::string& configFile) : m_parameters(WithCatalogue(configFile)) {
    m_syncing.Set(m_parameters.Sync());
}

const std::string& CZETCore::GetDomainName() {
    return m_parameters.Domain();
}

const std::string& CZETCore::GetServerName() {
    return m_parameters.Server();
}

bool CZETCore::IsServiceDiscovery() {
    return m_parameters.ServiceDiscovery();
}

bool CZETCore::RegisterInterface(std::shared_ptr<CZETInterface> interface) {
    return m_registry.Register(std::move(interface));
}

bool CZETCore::RemoveInterface(const std::string& name) {
    return m_registry.Remove(name);
}

std::string CZETCore::GetParam(const std::string& key) {
    return m_parameters.Get(key);
}

void CZETCore::UpdateParam(const std::string& key, const std::string& value) {
    m_parameters.Update(key, value);
    m_syncing.Set(m_parameters.Sync());
}

void CZETCore::TakeParameters(const CZETCore& other) {
    m_parameters = other.m_parameters;
    m_syncing.Set(m_parameters.Sync());
}

bool CZETCore::MatchRegEx(const std::string& pattern, const std::string& subject, void* reserved,
                          std::size_t flags) {
    if (reserved != nullptr || flags != 0) FailCheck("Invalid argument for '%s'.", "MatchRegEx");
    return m_regEx.Match(pattern, subject);
}

void CZETCore::WriteStatus(std::ostream& stream) {
    // Everybody may read the status, and a host's own parameters may be secrets.
    WriteStatusLines(stream, m_parameters.OfTheProduct());
}

}  // namespace ZET::Core
