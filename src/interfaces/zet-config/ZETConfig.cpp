#include "ZETConfig.h"

#include "Companions.h"
#include "Messages.h"
#include "ZETConfigFile.h"
#include "ZETOpenedFile.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// Callers rely on these line numbers in messages; they do not follow the source.
constexpr std::size_t kOpenTemplateLine = 80;
constexpr std::size_t kInstallTemplateLine = 138;
constexpr std::size_t kTemplateValueLine = 184;

/// The value of the first component of a distinguished name, whose first three bytes are assumed to be "dc=".
std::string FirstDomainComponent(const std::string& domainDn) {
    const std::string value = domainDn.size() < 3 ? "" : domainDn.substr(3);
    return value.substr(0, value.find(','));
}

std::string WithoutLeadingDot(const std::string& domain) {
    return domain.starts_with('.') ? domain.substr(1) : domain;
}

}  // namespace

CZETConfig::CZETConfig(IZETCore& core) : IZETConfig("zet-config"), m_core(core) {
    CZETConfig::RecreateTemplatesMap();
}

CZETConfig::~CZETConfig() = default;

void CZETConfig::RecreateTemplatesMap() {
    const auto setFromParam = [this](const char* placeholder, const char* key) {
        m_templates[placeholder] = m_core.GetParam(key);
    };
    m_templates.clear();
    setFromParam("${realm}", "REALM");
    setFromParam("${max_renewable_life}", "TICKET_MAX_RENEWABLE_LIFE");
    setFromParam("${max_life}", "TICKET_MAX_LIFE");
    m_templates["${server}"] = m_core.GetServerName();
    setFromParam("${server_id}", "SERVER_ID");
    setFromParam("${minimum_uid}", "MINIMUM_UID");
    setFromParam("${ldap_domain}", "DOMAIN_DN");
    m_templates["${ldap_dc}"] = FirstDomainComponent(m_templates["${ldap_domain}"]);
    m_templates["${domain}"] = WithoutLeadingDot(m_core.GetDomainName());
    setFromParam("${server_export_dir}", "SERVER_EXPORT_DIR");
    setFromParam("${valid_user_names}", "VALID_USER_NAMES");
    setFromParam("${valid_group_names}", "VALID_GROUP_NAMES");
    if (m_core.IsServiceDiscovery()) {
        m_templates["${ldap_uris}"] = "ldap://_ldap_tcp ";
        m_templates["${kdc_server}"] = "_kerberos_tcp";
        m_templates["${kadmin_server}"] = "_kadmin_tcp";
    } else {
        m_templates["${ldap_uris}"] = "ldap://" + m_core.GetServerName();
        m_templates["${kdc_server}"] = m_core.GetServerName();
        m_templates["${kadmin_server}"] = m_core.GetServerName();
    }
}

StringMap& CZETConfig::TemplatesValues() {
    if (m_templates.empty()) RecreateTemplatesMap();
    return m_templates;
}

std::string CZETConfig::TemplateValue(const std::string& placeholder) {
    const auto found = m_templates.find(placeholder);
    if (found != m_templates.end()) return found->second;
    Message message(kManagerSource, "TemplateValue", kTemplateValueLine);
    Log(ZETLogError,
        message.Format()(1, message.Translated(kModuleDomain, "Template parameter '%s' not found."),
                         placeholder.c_str()));
    return "";
}

bool CZETConfig::TemplateValueExists(const std::string& placeholder) {
    return m_templates.find(placeholder) != m_templates.end();
}

void CZETConfig::SetTemplateValue(const std::string& placeholder, const std::string& value) {
    if (TemplateValueExists(placeholder)) {
        m_templates[placeholder] = value;
    } else {
        m_templates.emplace(placeholder, value);
    }
}

std::shared_ptr<IZETConfigFile> CZETConfig::OpenConfigFile(const std::string& fileName,
                                                           const std::string& role, bool noMarkers) {
    auto file = std::make_shared<CZETOpenedFile>(m_core);
    if (!file->Open(fileName, role, noMarkers)) return nullptr;
    return file;
}

std::shared_ptr<IZETConfigFile> CZETConfig::OpenConfigFileTemplate(const std::string& templateName,
                                                                   const std::string& fileName,
                                                                   const std::string& role, bool noMarkers) {
    RequireArgument(templateName, kManagerSource, "OpenConfigFileTemplate", kOpenTemplateLine);
    // If the pristine template is missing too, opening the working copy fails.
    if (!IsFileExist(m_core.GetParam("ZET_CFG_DIR") + "/" + templateName))
        InstallConfigFileTemplate(templateName);
    auto file = std::make_shared<CZETOpenedFile>(m_core);
    if (!file->OpenTemplate(templateName, fileName, role, noMarkers)) return nullptr;
    return file;
}

void CZETConfig::ProcessConfigFileTemplate(const std::string& templateName, const std::string& fileName,
                                           const std::string& role, StringMap* values) {
    const std::shared_ptr<IZETConfigFile> file = OpenConfigFileTemplate(templateName, fileName, role, false);
    if (!file) return;
    if (values == nullptr) {
        file->ApplyTemplates(TemplatesValues());
    } else {
        StringMap runValues = TemplatesValues();
        for (const auto& [placeholder, value] : *values)
            runValues[placeholder] = value;
        file->ApplyTemplates(runValues);
    }
    file->Save(false);
}

void CZETConfig::InstallConfigFileTemplate(const std::string& templateName) {
    const std::string pristine = m_core.GetParam("ZET_CFG_TEMPL_DIR") + "/" + templateName;
    const std::string workingCopy = m_core.GetParam("ZET_CFG_DIR") + "/" + templateName;
    if (IsFileExist(pristine)) {
        CopyFile(pristine, workingCopy);
        return;
    }
    Message message(kManagerSource, "InstallConfigFileTemplate", kInstallTemplateLine);
    Log(ZETLogError, message.Format()(1, message.Translated(kModuleDomain, "Config file '%s' doesn't exist."),
                                      pristine.c_str()));
}

void CZETConfig::ReserveConfigFile(const std::string& fileName) {
    KeepOriginal(fileName, CopyFile);
}

void CZETConfig::RestoreConfigFile(const std::string& fileName) {
    const std::string reserve = fileName + ZETReserveSuffix;
    if (IsFileExist(reserve)) RenameFile(reserve, fileName);
    RemoveIfExists(fileName + ZETAbsenceSuffix);
}

void CZETConfig::RemoveConfigFileReserve(const std::string& fileName) {
    RemoveIfExists(fileName + ZETReserveSuffix);
    RemoveIfExists(fileName + ZETAbsenceSuffix);
}

void CZETConfig::RemoveZETMarkersFromConfigFile(const std::string& fileName) {
    const std::shared_ptr<IZETConfigFile> file = OpenConfigFile(fileName, "", false);
    if (!file) return;
    file->RemoveZETMarkers();
    file->Save(false);
}

bool CZETConfig::UpdateConfigFileParam(const std::string& name, const std::string& value) {
    const auto file = std::make_shared<CZETConfigFile>(m_core);
    if (!file->Open(m_core.GetParam("ZET_CFG"), "", true)) return false;
    file->SetParamValue(name, value);
    file->Save(true);
    // Only now, so that a file that could not be saved leaves the core's value unchanged.
    m_core.UpdateParam(name, value);
    return true;
}

}  // namespace ZET
