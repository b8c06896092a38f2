#ifndef ZET_PARAMETER_NAMES_H
#define ZET_PARAMETER_NAMES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How parameters and placeholders are named, and which come from which.
namespace ZET::Deploy {

/// One of the product's own placeholders, and the parameter that it gets its value from.
struct OwnPlaceholder {
    const char* placeholder;
    const char* parameter;
};

inline constexpr OwnPlaceholder kOwnPlaceholders[] = {
    {"${domain}", "DOMAIN"},
    {"${realm}", "REALM"},
    {"${ldap_domain}", "DOMAIN_DN"},
    {"${ldap_dc}", "DOMAIN_DN"},
    {"${server}", "SERVER"},
    {"${kdc_server}", "SERVER"},
    {"${kadmin_server}", "SERVER"},
    {"${ldap_uris}", "SERVER"},
    {"${max_renewable_life}", "TICKET_MAX_RENEWABLE_LIFE"},
    {"${max_life}", "TICKET_MAX_LIFE"},
    {"${server_id}", "SERVER_ID"},
    {"${minimum_uid}", "MINIMUM_UID"},
    {"${server_export_dir}", "SERVER_EXPORT_DIR"},
    {"${valid_user_names}", "VALID_USER_NAMES"},
    {"${valid_group_names}", "VALID_GROUP_NAMES"},
};

/// A name has letters, digits and "_", and does not begin with a digit.
bool IsParameterName(std::string_view name);

/// The names of all parameters that the product has.
std::vector<std::string> NamesOfTheProduct();

/// Whether the value means yes or no. A value of a parameter of the host's own may mean neither.
std::optional<bool> MeaningOf(const std::string& name, const std::string& value);

/// Whether both values mean the same for the parameter: yes and no can be said in several words.
bool HaveSameMeaning(const std::string& name, const std::string& one, const std::string& other);

/// The placeholder for a parameter that the product does not have: "${ntp_server}" for "NTP_SERVER".
std::string PlaceholderFor(const std::string& name);

/// "realm" for "${realm}"
std::string NameOfPlaceholder(const std::string& placeholder);

/// The parameter that gives one of the product's own placeholders its value; empty if it is none of them.
std::string ParameterBehind(const std::string& placeholder);

/// The parameter that one of the product's is made from if nobody gives it; empty if there is none.
std::string ParameterThatMakes(const std::string& name);

/// The one of `names` that `name` is likely to be meant for; empty if there is none.
std::string NearestName(const std::string& name, const std::vector<std::string>& names);

/// The same where any name is possible: none for a short name, of which two letters are half.
std::string LikelyName(const std::string& name, const std::vector<std::string>& names);

}  // namespace ZET::Deploy

#endif
