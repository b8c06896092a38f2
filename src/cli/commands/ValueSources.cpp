#include "cli/commands/ValueSources.h"
#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/Translation.h"

namespace ZET::Cli {

namespace {

std::string OriginOf(const std::optional<HostValues::Source>& source) {
    if (!source) return _("from the product's default");
    return Filled(_("from %s"),
                  {source->line == 0 ? source->file : source->file + ":" + std::to_string(source->line)});
}

}  // namespace

void TellValue(Session& session, const std::string& name, const std::string& value,
               const std::optional<HostValues::Source>& source) {
    session.Out().Data(name + "=" + value);
    if (!session.Asked().quiet) session.Out().Line("    " + OriginOf(source));
    session.Out().Add("sources", Fields{{"name", name},
                                        {"file", TextOrNull(source ? source->file : "")},
                                        {"line", NumberOrNull(source ? source->line : 0)},
                                        {"lossy", session.Asked().json && IsLossy(value)}});
}

int TellUnread(Session& session, const std::vector<Problem>& unread) {
    for (const Problem& problem : unread)
        session.Out().Error(problem.Describe());
    return unread.empty() ? kDone : kFailed;
}

}  // namespace ZET::Cli
