#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"

namespace ZET::Cli {

namespace {

struct NoWords {};

int Values(Session& session, const NoWords&) {
    session.Out().Set("values", nullptr);
    Fields values;
    for (const auto& [placeholder, value] : session.Product().Config().TemplatesValues()) {
        session.Out().Data(NameOfPlaceholder(placeholder) + "=" + value);
        values.emplace_back(NameOfPlaceholder(placeholder), value);
    }
    session.Out().Set("values", std::move(values));
    return kDone;
}

}  // namespace

void RegisterValues(CommandLine& line) {
    line.Single(Subject::Product).Add<NoWords>("values", "List the template values", Values);
}

}  // namespace ZET::Cli
