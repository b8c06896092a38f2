#include "cli/ExitStatus.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"
#include "cli/commands/ValueSources.h"
#include "deploy/state/ParameterNames.h"

namespace ZET::Cli {

namespace {

int Values(Session& session, const NoWords&) {
    session.Out().Set("values", nullptr);
    session.Out().AddList("sources");
    Deployment& product = session.Product();
    Fields values;
    for (const auto& [placeholder, value] : product.TemplateValues()) {
        const std::string name = Deploy::NameOfPlaceholder(placeholder);
        TellValue(session, name, value, product.Values().SourceOfPlaceholder(placeholder));
        values.emplace_back(name, value);
    }
    session.Out().Set("values", std::move(values));
    const HostValues::Unread& unread = product.Values().UnreadSources();
    const int ofParams = TellUnread(session, unread.params);
    const int ofTexts = TellUnread(session, unread.texts);
    return ofParams == kDone ? ofTexts : ofParams;
}

}  // namespace

void RegisterValues(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<NoWords>("values", "List the template values, and where each comes from", Values);
}

}  // namespace ZET::Cli
