#include "cli/FileReport.h"
#include "cli/Lookup.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "cli/commands/ValueSources.h"
#include "deploy/edit/OptionEdits.h"

namespace ZET::Cli {

namespace {

struct OptionWords {
    std::string name;
    std::string value;
};

/// Whether no source that could not be read may change the value.
bool IsCertain(Deployment& product, const std::string& name) {
    return product.Values().UnreadSources().params.empty() || product.Values().IsFixed(name) ||
           FindGiven(product.Values().GivenByMain(), name) != nullptr;
}

int GetOption(Session& session, const OptionWords& asked) {
    session.Out().Set("name", asked.name);
    BeginLookup(session, "value");
    Deployment& product = session.Product();
    const std::optional<std::string> value = GetOption(product, asked.name);
    session.Out().Set("secret", product.HostSecrets().IsPrivate(product.Param("ZET_CFG")));
    if (!IsCertain(product, asked.name)) return TellUnread(session, product.Values().UnreadSources().params);
    return ReportLookup(session, Filled(_("there is no parameter \"%s\""), {asked.name}), "value", value);
}

int SetOption(Session& session, const OptionWords& asked) {
    session.Wanted().mendsParameters = true;
    BeginFileReport(session);
    return ReportFile(session, SetOption(session.Product(), asked.name, asked.value));
}

int UnsetOption(Session& session, const OptionWords& asked) {
    session.Wanted().mendsParameters = true;
    BeginFileReport(session);
    return ReportFile(session, UnsetOption(session.Product(), asked.name));
}

int ListParameters(Session& session, const NoWords&) {
    session.Out().Set("options", nullptr);
    session.Out().AddList("sources");
    Deployment& product = session.Product();
    session.Out().Set("secret", product.HostSecrets().IsPrivate(product.Param("ZET_CFG")));
    Fields options;
    for (const auto& [name, value] : product.Values().Params()) {
        TellValue(session, name, value, product.Values().SourceOfParam(name));
        options.emplace_back(name, value);
    }
    session.Out().Set("options", std::move(options));
    return TellUnread(session, product.Values().UnreadSources().params);
}

}  // namespace

void RegisterOption(CommandLine& line) {
    auto family = line.Family("option", "The product's main configuration file", Subject::Product);
    family.Add<OptionWords>("get", "Print the value of a parameter", GetOption)("NAME", &OptionWords::name,
                                                                                "The parameter");
    family.Add<OptionWords>("set", "Set a parameter", SetOption)("NAME", &OptionWords::name, "The parameter")
        .Text("VALUE", &OptionWords::value, "Its value");
    family.Add<OptionWords>("unset", "Remove the lines of a parameter", UnsetOption)(
        "NAME", &OptionWords::name, "The parameter");
    family.Add<NoWords>("list", "List the parameters, and where each comes from", ListParameters);
}

}  // namespace ZET::Cli
