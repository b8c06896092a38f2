#include "deploy/targets/ServiceNames.h"

#include <chrono>

#include "deploy/host/Failure.h"
#include "deploy/host/Process.h"
#include "deploy/host/Words.h"
#include "deploy/state/ConfFile.h"

namespace ZET::Deploy {

namespace {

constexpr char kServiceDiscovery[] = "SERVICE_DISCOVERY";
constexpr std::chrono::seconds kPatience{5};

struct ServiceName {
    const char* placeholder;
    const char* host;
};

constexpr ServiceName kServiceNames[] = {
    {"${kdc_server}", "_kerberos_tcp"},
    {"${kadmin_server}", "_kadmin_tcp"},
    {"${ldap_uris}", "_ldap_tcp"},
};

/// Asks through another program, so that a name service that does not answer holds nobody up for longer than
/// `kPatience`.
bool HasAddress(const char* host) {
    const ProcessResult result = RunProcess({"getent", "ahosts", host}, {.timeLimit = kPatience});
    return !result.isLate && result.status == 0;
}

/// The place where the main configuration file says so; the whole file if the words of the command did.
Problem ProblemIn(const std::string& file) {
    const std::vector<GivenParameter> all = GivenIn(file);
    const GivenParameter* const given = FindGiven(all, kServiceDiscovery);
    return {.file = file, .line = given == nullptr ? 0 : given->line};
}

void WarnOf(Deployment& product, const ServiceName& name) {
    Problem problem = ProblemIn(product.Param("ZET_CFG"));
    problem.text = Words("%s is yes, but this host finds no address of \"%s\", which %s names",
                         kServiceDiscovery, name.host, name.placeholder);
    problem.remedy = Words(
        "give %s.DOMAIN one in the domain's name service and name the domain as \"search\" in "
        "/etc/resolv.conf, or set SERVICE_DISCOVERY=no",
        name.host);
    product.Out().Warning(problem.Describe());
}

}  // namespace

void WarnOfServiceNames(Deployment& product, const std::set<std::string>& used) {
    if (!product.Core().IsServiceDiscovery() || !product.Wanted().root.empty()) return;
    try {
        for (const ServiceName& name : kServiceNames)
            if (used.contains(name.placeholder) && !HasAddress(name.host)) WarnOf(product, name);
    } catch (const Failure& failure) {
        product.Out().Warning(failure.what());
    }
}

}  // namespace ZET::Deploy
