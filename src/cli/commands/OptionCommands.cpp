#include "cli/FileReport.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Lookup.h"
#include "deploy/edit/OptionEdits.h"

namespace ZET {

int RunOptionGet(Session& session) {
    Deployment& product = session.Product();
    const std::string& name = session.Asked().name;
    const std::optional<std::string> value = GetOption(product, name);
    session.Out().Set("name", name);
    session.Out().Set("secret", product.HostSecrets().IsPrivate(product.Param("ZET_CFG")));
    return ReportLookup(session, "there is no parameter \"" + name + "\"", "value", value);
}

int RunOptionSet(Session& session) {
    const Request& asked = session.Asked();
    BeginFileReport(session);
    return ReportFile(session, SetOption(session.Product(), asked.name, asked.text));
}

}  // namespace ZET
