#include "cli/commands/ValueSources.h"

namespace ZET::Cli {

namespace {

std::string PlaceOf(const std::optional<HostValues::Source>& source) {
    if (!source) return "the product's default";
    return source->line == 0 ? source->file : source->file + ":" + std::to_string(source->line);
}

}  // namespace

void TellValue(Session& session, const std::string& name, const std::string& value,
               const std::optional<HostValues::Source>& source) {
    session.Out().Data(name + "=" + value);
    if (!session.Asked().quiet) session.Out().Line("    from " + PlaceOf(source));
    session.Out().Add("sources",
                      Fields{{"name", name},
                             {"file", source ? Value(source->file) : Value(nullptr)},
                             {"line", source && source->line != 0 ? Value(source->line) : Value(nullptr)}});
}

}  // namespace ZET::Cli
