#include "deploy/history/LineAges.h"

#include <map>
#include <utility>

#include "deploy/history/HistoryEntries.h"
#include "deploy/history/TextDiffer.h"
#include "text/FormerLines.h"
#include "text/Lines.h"

namespace ZET::Deploy {

LineWalk::LineWalk(std::string text, Differ differ) : m_text(std::move(text)), m_differ(std::move(differ)) {
    const std::size_t count = Text::SplitLines(m_text).size();
    m_steps.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        m_open.push_back({i, i + 1});
}

void LineWalk::StepBack(const std::string* older, std::size_t step) {
    if (older != nullptr && *older == m_text) return;
    std::vector<std::size_t> numbers;
    for (const Line& line : m_open)
        numbers.push_back(line.number);
    const std::vector<std::size_t> former = older == nullptr
                                                ? std::vector<std::size_t>(numbers.size(), 0)
                                                : Text::FormerLines(m_differ(*older, m_text), numbers);
    std::vector<Line> open;
    for (std::size_t i = 0; i < m_open.size(); ++i) {
        if (former[i] == 0)
            m_steps[m_open[i].index] = step;
        else
            open.push_back({m_open[i].index, former[i]});
    }
    m_open = std::move(open);
    m_text = older == nullptr ? "" : *older;
}

namespace {

/// Walks back through what is recorded of one file.
class RecordedWalk {
  public:
    RecordedWalk(const HistoryReader& reader, const std::string& text)
        : m_reader(reader), m_walk(text, [this](const std::string& older, const std::string& newer) {
              return m_differ.Diff(&older, &newer, "text");
          }) {}

    /// Goes back as far as texts are kept.
    void Go(const std::string& name) {
        for (const RecordedEntry& entry : m_reader.EntriesOf(name)) {
            if (m_walk.IsDone()) return;
            const std::optional<RecordedFile> file = m_reader.ChangeIn(entry.number, name);
            if (file && !GoThrough(entry, *file)) return;
        }
    }

    /// Converts only the entries that a line came with.
    std::vector<std::optional<LineAge>> Ages() const {
        std::map<std::size_t, LineAge> told;
        std::vector<std::optional<LineAge>> ages;
        for (const std::optional<std::size_t>& step : m_walk.Steps()) {
            ages.emplace_back();
            if (!step) continue;
            const auto [age, isNew] = told.try_emplace(*step);
            if (isNew) age->second = ToldAge(m_steps[*step]);
            ages.back() = age->second;
        }
        return ages;
    }

  private:
    struct Step {
        RecordedEntry entry;
        bool isEditAfter;  ///< the step is an edit after the entry, which nobody recorded
    };

    /// What the entry left may have been edited by hand since.
    bool GoThrough(const RecordedEntry& entry, const RecordedFile& file) {
        return (!file.IsPlanned() || GoBack(file.after, {entry, true})) &&
               GoBack(file.before, {entry, false});
    }

    /// Returns false where the walk ends.
    bool GoBack(const RecordedState& state, Step step) {
        if (state.exists && !state.text) return false;
        m_steps.push_back(std::move(step));
        const std::string text = state.exists ? m_reader.Text(state) : "";
        m_walk.StepBack(state.exists ? &text : nullptr, m_steps.size() - 1);
        return true;
    }

    LineAge ToldAge(const Step& step) const {
        if (step.isEditAfter) return {std::nullopt, step.entry.number};
        return {ToldEntry(m_reader, step.entry), std::nullopt};
    }

    const HistoryReader& m_reader;
    TextDiffer m_differ;
    LineWalk m_walk;
    std::vector<Step> m_steps;
};

}  // namespace

std::vector<std::optional<LineAge>> AgesOfLines(Deployment& product, const std::string& file,
                                                const std::string& text) {
    History& history = product.HostHistory();
    history.TellDenied();
    if (history.IsDenied() || history.ToLookIfUsable() == nullptr) return {};
    const HistoryReader reader(product);
    const std::optional<std::string> name = reader.FindName(file);
    if (!name) return {};
    RecordedWalk walk(reader, text);
    walk.Go(*name);
    return walk.Ages();
}

}  // namespace ZET::Deploy
