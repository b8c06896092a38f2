#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"

namespace ZET {

namespace {

/// "realm" for "${realm}".
std::string NameOf(const std::string& placeholder) {
    return placeholder.substr(2, placeholder.size() - 3);
}

}  // namespace

int RunValues(Session& session) {
    Fields values;
    for (const auto& [placeholder, value] : session.Config().TemplatesValues()) {
        session.Out().Data(NameOf(placeholder) + "=" + value);
        values.emplace_back(NameOf(placeholder), value);
    }
    session.Out().Set("values", std::move(values));
    return kDone;
}

}  // namespace ZET
