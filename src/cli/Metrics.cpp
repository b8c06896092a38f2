#include "cli/Metrics.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <vector>

namespace ZET::Cli {

namespace {

constexpr const char* kCountedStates[] = {"in sync",       "pending", "edited", "missing",
                                          "not committed", "differs", "unknown"};
constexpr const char* kLineStates[] = {"in sync", "pending", "edited", "missing", "not committed", "unknown"};
constexpr const char* kEditStates[] = {"in place", "changed", "gone", "missing"};

/// The gauges of one role, family by family.
class Exposition {
  public:
    explicit Exposition(Deploy::Role role) : m_role(std::string("role=\"") + Deploy::NameOf(role) + "\"") {}

    void Family(const std::string& name, const char* help, const char* unit = "") {
        m_name = name;
        m_text += "# TYPE " + name + " gauge\n";
        if (*unit != '\0') m_text += "# UNIT " + name + " " + unit + "\n";
        m_text += "# HELP " + name + " " + help + "\n";
    }

    void Sample(std::int64_t value, const std::string& labels = "") {
        m_text += m_name + "{" + m_role + (labels.empty() ? "" : "," + labels) + "} " +
                  std::to_string(value) + "\n";
    }

    std::string Finished() const { return m_text + "# EOF\n"; }

  private:
    std::string m_role;
    std::string m_name;
    std::string m_text;
};

std::optional<std::int64_t> SecondsOf(const std::string& time) {
    struct tm parts = {};
    const char* const end = strptime(time.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    if (end == nullptr || *end != '\0') return std::nullopt;
    return timegm(&parts);
}

template <typename Each, std::size_t Count>
void AddStates(Exposition& text, const char* const (&states)[Count], const std::vector<Each>& all) {
    for (const char* const state : states) {
        const auto number =
            std::count_if(all.begin(), all.end(), [&](const Each& each) { return each.state == state; });
        text.Sample(number, std::string("state=\"") + state + "\"");
    }
}

}  // namespace

std::string MetricsOf(Deploy::Role role, const Deploy::RoleStatus& status,
                      const Deploy::TargetStates& states) {
    Exposition text(role);
    const bool isInSync = states.IsInSync() && !states.IsAnyUnknown();
    if (states.isHistoryRead || !isInSync) {
        text.Family("zet_in_sync", "Whether each target of the role is as a commit would make it.");
        text.Sample(isInSync ? 1 : 0);
    }
    text.Family("zet_targets", "Targets of the role in each state.");
    AddStates(text, kCountedStates, states.targets);
    if (states.isHistoryRead) {
        text.Family("zet_edits", "Files of the host that were edited in place, in each state.");
        AddStates(text, kEditStates, states.edits);
        text.Family("zet_listed_edits", "Lines that the lists ask for, in each state.");
        AddStates(text, kLineStates, states.listedEdits);
    }
    text.Family("zet_newer_templates", "Working copies of which a newer text is shipped.");
    text.Sample(static_cast<std::int64_t>(states.newerTemplates.size()));
    if (states.isHistoryRead) {
        text.Family("zet_left_over_targets", "Committed files that the list of targets no longer has.");
        text.Sample(static_cast<std::int64_t>(states.leftOvers.size()));
    }
    if (const auto time = SecondsOf(status.commitTime)) {
        text.Family("zet_last_commit_timestamp_seconds", "When the role was committed last.", "seconds");
        text.Sample(*time);
    }
    return text.Finished();
}

}  // namespace ZET::Cli
