#include "cli/ExitStatus.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"

namespace ZET {

namespace {

/// "realm" for "${realm}".
std::string NameOf(const std::string& placeholder) {
    return placeholder.substr(2, placeholder.size() - 3);
}

struct NoWords {};

int Values(Session& session, const NoWords&) {
    Fields values;
    for (const auto& [placeholder, value] : session.Product().Config().TemplatesValues()) {
        session.Out().Data(NameOf(placeholder) + "=" + value);
        values.emplace_back(NameOf(placeholder), value);
    }
    session.Out().Set("values", std::move(values));
    return kDone;
}

}  // namespace

void RegisterValues(CommandLine& line) {
    line.Single(Subject::Product).Add<NoWords>("values", "List the template values", Values);
}

}  // namespace ZET
