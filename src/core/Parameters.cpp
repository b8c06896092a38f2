#include "Parameters.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>

#include "Message.h"
#include "ParameterFile.h"
#include "posix/Printable.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

constexpr char kConfigFile[] = "ZET_CFG";
constexpr char kDomain[] = "DOMAIN";
constexpr char kServer[] = "SERVER";
constexpr char kServiceDiscovery[] = "SERVICE_DISCOVERY";
constexpr char kSync[] = "ZET_SYNC";

/// "EXAMPLE.ORG" for ".example.org".
std::string RealmOf(std::string domain) {
    if (!domain.empty() && domain.front() == '.') domain.erase(0, 1);
    for (char& c : domain)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return domain;
}

/// "dc=example,dc=org" for ".example.org".
std::string DistinguishedNameOf(const std::string& domain) {
    std::string result;
    std::string_view rest = domain;
    while (!rest.empty()) {
        const std::size_t dot = rest.find('.');
        const std::string_view label = rest.substr(0, dot);
        rest.remove_prefix(dot == std::string_view::npos ? rest.size() : dot + 1);
        if (label.empty()) continue;
        if (!result.empty()) result += ',';
        result.append("dc=").append(label);
    }
    return result;
}

struct Default {
    const char* key;
    const char* value;
    std::string (*derive)(std::string domain);
};

constexpr Default kDefaults[] = {
    {kDomain, "", nullptr},
    {"DOMAIN_DN", "", [](std::string domain) { return DistinguishedNameOf(domain); }},
    {"MINIMUM_UID", "10000", nullptr},
    {"NETWORK_FS_TYPE", "nfs4", nullptr},
    {"REALM", "", &RealmOf},
    {kServer, "", nullptr},
    {"SERVER_EXPORT_DIR", "/srv/zet", nullptr},
    {"SERVER_ID", "1", nullptr},
    {kServiceDiscovery, "no", nullptr},
    {"TICKET_MAX_LIFE", "10h 0m 0s", nullptr},
    {"TICKET_MAX_RENEWABLE_LIFE", "7d 0h 0m 0s", nullptr},
    {"VALID_GROUP_NAMES", "^[a-z_][a-z0-9_-]*$", nullptr},
    {"VALID_USER_NAMES", "^[a-z_][a-z0-9_-]*$", nullptr},
    {"ZET_CFG_DIR", "/etc/zet", nullptr},
    {"ZET_CFG_TEMPL_DIR", "/usr/share/zet/templates", nullptr},
    {"ZET_LANG", "C", nullptr},
    {kSync, "yes", nullptr},
    {"ZET_VAR_LIB_DIR", "/var/lib/zet", nullptr},
};

const Default* FindDefault(std::string_view key) {
    for (const Default& each : kDefaults)
        if (key == each.key) return &each;
    return nullptr;
}

std::string DefaultValue(const Default& entry, const std::string& domain) {
    return entry.derive != nullptr ? entry.derive(domain) : entry.value;
}

bool IsFlag(std::string_view key) {
    return key == kServiceDiscovery || key == kSync;
}

std::optional<bool> ReadFlag(std::string_view value) {
    if (value == "yes" || value == "true" || value == "1") return true;
    if (value == "no" || value == "false" || value == "0") return false;
    return std::nullopt;
}

/// The core warns of a value that it does not understand and goes on with the default: refusing it would keep
/// every host from starting once it stands in the file, and dropping it would lose what somebody wrote.
std::string ProblemOfFlag(std::string_view key, std::string_view value) {
    if (!IsFlag(key) || ReadFlag(value)) return {};
    return Message("'%s' is no value for %s and counts as %s (write yes or no)", Printable(value).c_str(),
                   std::string(key).c_str(), FindDefault(key)->value);
}

/// By hosts in several threads.
void WarnOnce(const std::string& key) {
    static std::mutex& mutex = *new std::mutex;
    static std::set<std::string>& warned = *new std::set<std::string>;
    const auto isNew = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return warned.insert(key).second;
    };
    if (isNew()) Warn("Parameter '%s' is unknown.", Printable(key).c_str());
}

bool CanStandInALine(std::string_view value) {
    return value.find_first_of(std::string_view("\n\0", 2)) == std::string_view::npos;
}

}  // namespace

std::vector<std::string> ParameterNames() {
    std::vector<std::string> names = {kConfigFile};
    for (const Default& each : kDefaults)
        names.emplace_back(each.key);
    std::sort(names.begin(), names.end());
    return names;
}

Parameters::Parameters() : m_values{{kConfigFile, ""}} {}

Parameters::Parameters(const std::string& file) {
    RequireNotEmpty(file, "CZETHost");
    ReadParameterFile(file, [&](const ParameterLine& line) {
        if (const std::string problem = ProblemOfFlag(line.name, line.value); !problem.empty())
            Warn("%s:%zu: %s", file.c_str(), line.number, problem.c_str());
        if (line.name == kConfigFile)
            Warn("%s:%zu: %s has no effect here, it is always the file that is read (remove the line)",
                 file.c_str(), line.number, kConfigFile);
        m_values.insert_or_assign(std::string(line.name), line.value);
    });
    m_values.insert_or_assign(kConfigFile, file);
}

const std::string* Parameters::Find(const std::string& key) const {
    const auto found = m_values.find(key);
    return found != m_values.end() ? &found->second : nullptr;
}

const std::string& Parameters::Domain() const {
    static const std::string& none = *new std::string;
    const std::string* value = Find(kDomain);
    return value != nullptr ? *value : none;
}

const std::string& Parameters::Server() const {
    static const std::string& none = *new std::string;
    const std::string* value = Find(kServer);
    return value != nullptr ? *value : none;
}

bool Parameters::Flag(const std::string& key) const {
    const std::string* value = Find(key);
    const std::optional<bool> flag = value != nullptr ? ReadFlag(*value) : std::nullopt;
    return flag ? *flag : *ReadFlag(FindDefault(key)->value);
}

bool Parameters::ServiceDiscovery() const {
    return Flag(kServiceDiscovery);
}

bool Parameters::Sync() const {
    return Flag(kSync);
}

std::string Parameters::Get(const std::string& key) const {
    if (const std::string* value = Find(key)) return *value;
    if (const Default* entry = FindDefault(key)) return DefaultValue(*entry, Domain());
    WarnOnce(key);
    return {};
}

void Parameters::Update(const std::string& key, const std::string& value) {
    RequireNotEmpty(key, "UpdateParam");
    if (!IsParameterName(key)) FailCheck("'%s' is no name of a parameter.", Printable(key).c_str());
    if (!CanStandInALine(value))
        FailCheck("The value of parameter '%s' holds a line feed or a NUL byte.", key.c_str());
    if (key == kConfigFile && value != *Find(kConfigFile))
        FailCheck("Parameter '%s' cannot be changed.", kConfigFile);
    if (const std::string problem = ProblemOfFlag(key, value); !problem.empty()) Warn("%s", problem.c_str());
    m_values.insert_or_assign(key, value);
}

StringMap Parameters::All() const {
    StringMap all = m_values;
    for (const Default& each : kDefaults)
        all.try_emplace(each.key, DefaultValue(each, Domain()));
    return all;
}

StringMap Parameters::OfTheProduct() const {
    StringMap own = {{kConfigFile, *Find(kConfigFile)}};
    for (const Default& each : kDefaults)
        own.emplace(each.key, Get(each.key));
    return own;
}

std::string ProblemOfParam(const std::string& key, const std::string& value) {
    if (!IsParameterName(key))
        return Message("'%s' is no name of a parameter (use letters, digits and \"_\", no digit first)",
                       Printable(key).c_str());
    if (!CanStandInALine(value))
        return Message("the value of %s holds a line feed or a NUL byte (give it without)", key.c_str());
    return ProblemOfFlag(key, value);
}

}  // namespace ZET
