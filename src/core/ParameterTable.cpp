#include "ParameterTable.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ParameterKinds.h"

namespace ZET::Core {

namespace {

/// "EXAMPLE.ORG" for ".example.org".
std::string RealmOf(const std::string& domain) {
    std::string realm = domain.starts_with('.') ? domain.substr(1) : domain;
    for (char& c : realm)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return realm;
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

using Kind = ZETParameterKind;

constexpr bool kMayBeEmpty = true;
constexpr bool kHasAValue = false;
constexpr bool kForTemplates = true;
constexpr bool kForTheProduct = false;
constexpr char kYesNo[] = "yes no";

constexpr ParameterEntry kTable[] = {
    {kDomain, Kind::DomainName, kMayBeEmpty, kForTemplates, "", nullptr,
     "The DNS domain. A leading \".\" is dropped where it would be wrong."},
    {"DOMAIN_DN", Kind::LdapName, kMayBeEmpty, kForTemplates, "", &DistinguishedNameOf,
     "The LDAP name of the domain."},
    {"MINIMUM_UID", Kind::Number, kMayBeEmpty, kForTemplates, "10000", nullptr,
     "The first user number of the domain."},
    {"NETWORK_FS_TYPE", Kind::OneOf, kMayBeEmpty, kForTheProduct, "nfs4", nullptr,
     "The type of the network file system; empty where there is none.",
     "nfs4 nfs cifs smb3 afs ceph glusterfs"},
    {"REALM", Kind::Realm, kMayBeEmpty, kForTemplates, "", &RealmOf, "The Kerberos realm."},
    {kServer, Kind::HostName, kMayBeEmpty, kForTemplates, "", nullptr,
     "The host name of the domain's server."},
    {"SERVER_EXPORT_DIR", Kind::AbsolutePath, kMayBeEmpty, kForTemplates, "/srv/zet", nullptr,
     "The directory that the server exports."},
    {"SERVER_ID", Kind::Number, kMayBeEmpty, kForTemplates, "1", nullptr, "The number of the server."},
    {kServiceDiscovery, Kind::YesNo, kHasAValue, kForTheProduct, "no", nullptr,
     "Whether files name the domain's services by their DNS service names instead of the server.", kYesNo},
    {"TICKET_MAX_LIFE", Kind::Duration, kMayBeEmpty, kForTemplates, "10h 0m 0s", nullptr,
     "How long tickets last."},
    {"TICKET_MAX_RENEWABLE_LIFE", Kind::Duration, kMayBeEmpty, kForTemplates, "7d 0h 0m 0s", nullptr,
     "How long tickets may be renewed."},
    {"VALID_GROUP_NAMES", Kind::RegularExpression, kMayBeEmpty, kForTemplates, "^[a-z_][a-z0-9_-]*$", nullptr,
     "What the names of groups have to match."},
    {"VALID_USER_NAMES", Kind::RegularExpression, kMayBeEmpty, kForTemplates, "^[a-z_][a-z0-9_-]*$", nullptr,
     "What the names of users have to match."},
    {kConfigFile, Kind::AbsolutePath, kMayBeEmpty, kForTheProduct, "", nullptr,
     "This file, whatever a line in it says."},
    {"ZET_CFG_DIR", Kind::AbsolutePath, kHasAValue, kForTheProduct, "/etc/zet", nullptr,
     "The directory of the working copies of the templates."},
    {"ZET_CFG_TEMPL_DIR", Kind::AbsolutePath, kHasAValue, kForTheProduct, "/usr/share/zet/templates", nullptr,
     "The directory of the pristine templates and their list."},
    {"ZET_HISTORY", Kind::YesNo, kHasAValue, kForTheProduct, "yes", nullptr,
     "Whether the texts of the files that commands write are kept, so that any change can be taken back.",
     kYesNo},
    {"ZET_HISTORY_KEEP", Kind::Number, kHasAValue, kForTheProduct, "100", nullptr,
     "How many of the last commands that wrote something the history keeps."},
    {"ZET_HISTORY_KEEP_EDITS", Kind::Number, kHasAValue, kForTheProduct, "1000", nullptr,
     "How many of those that replaced somebody's edit it keeps."},
    {"ZET_HISTORY_MAX_FILE", Kind::Number, kHasAValue, kForTheProduct, "16777216", nullptr,
     "The size of the largest file, in bytes, whose text the history keeps."},
    {"ZET_LANG", Kind::Locale, kMayBeEmpty, kForTheProduct, "C", nullptr,
     "The language of texts that are written into files, whoever runs the command; empty is C."},
    {"ZET_ON_EDIT", Kind::OneOf, kHasAValue, kForTheProduct, "overwrite", nullptr,
     "What a commit does with a file that somebody edited.", "overwrite merge refuse"},
    {kSync, Kind::YesNo, kHasAValue, kForTheProduct, "yes", nullptr,
     "Whether what is written is on the disk before it takes its name.", kYesNo},
    {"ZET_VAR_LIB_DIR", Kind::AbsolutePath, kHasAValue, kForTheProduct, "/var/lib/zet", nullptr,
     "The directory of the status files."},
};

/// Splits words that are separated by single blanks. A stream, which every command would create for every
/// parameter, costs 80,000 instructions more.
std::vector<std::string> SplitWords(std::string_view words) {
    std::vector<std::string> split;
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        split.emplace_back(words.substr(0, end));
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return split;
}

}  // namespace

std::span<const ParameterEntry> ParameterTable() {
    return kTable;
}

const ParameterEntry* FindParameter(std::string_view name) {
    for (const ParameterEntry& each : kTable)
        if (name == each.name) return &each;
    return nullptr;
}

std::string DefaultValue(const ParameterEntry& entry, const std::string& domain) {
    return entry.derive != nullptr ? entry.derive(domain) : entry.value;
}

ZETParameter Described(const ParameterEntry& entry) {
    ZETParameter parameter;
    parameter.name = entry.name;
    parameter.kind = entry.kind;
    parameter.words = SplitWords(entry.words);
    parameter.kindName = NameOfKind(parameter);
    parameter.value = entry.value;
    parameter.source = entry.derive != nullptr ? kDomain : "";
    parameter.text = entry.text;
    parameter.mayBeEmpty = entry.mayBeEmpty;
    return parameter;
}

}  // namespace ZET::Core

namespace ZET {

std::vector<ZETParameter> KnownParameters() {
    std::vector<ZETParameter> known;
    for (const Core::ParameterEntry& each : Core::ParameterTable())
        known.push_back(Core::Described(each));
    return known;
}

std::optional<ZETParameter> KnownParameter(std::string_view name) {
    const Core::ParameterEntry* const entry = Core::FindParameter(name);
    return entry == nullptr ? std::nullopt : std::optional(Core::Described(*entry));
}

bool IsKnownParameter(std::string_view name) {
    return Core::FindParameter(name) != nullptr;
}

}  // namespace ZET
