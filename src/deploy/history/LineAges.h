#ifndef ZET_LINE_AGES_H
#define ZET_LINE_AGES_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/History.h"

namespace ZET::Deploy {

/// What a line came with: an entry, or an edit by somebody else that nobody recorded.
struct LineAge {
    std::optional<HistoryEntry> entry;      ///< without its files
    std::optional<std::int64_t> editAfter;  ///< the last entry before the edit

    bool operator==(const LineAge& other) const {
        return editAfter == other.editAfter && entry.has_value() == other.entry.has_value() &&
               (!entry || entry->number == other.entry->number);
    }
};

/// Walks from a text back to older ones, and finds the step that each line came with.
class LineWalk {
  public:
    /// The unified diff of two texts.
    using Differ = std::function<std::string(const std::string& older, const std::string& newer)>;

    LineWalk(std::string text, Differ differ);

    /// Steps back to an older text; null if there was no file. Lines that are not in it came with this step.
    void StepBack(const std::string* older, std::size_t step);

    /// True once the step of every line is known.
    bool IsDone() const { return m_open.empty(); }

    /// The step of each line, at index line number - 1; none if the line is in the oldest text.
    const std::vector<std::optional<std::size_t>>& Steps() const { return m_steps; }

  private:
    struct Line {
        std::size_t index = 0;   ///< in the first text, from 0
        std::size_t number = 0;  ///< in `m_text`, from 1
    };

    std::string m_text;
    Differ m_differ;
    std::vector<Line> m_open;
    std::vector<std::optional<std::size_t>> m_steps;
};

/// What each line of the file's text came with, at index line number - 1; none if it is older than the
/// records, or nobody can tell. Empty if nothing is known of the file. Reports an unusable history as a
/// warning.
std::vector<std::optional<LineAge>> AgesOfLines(Deployment& product, const std::string& file,
                                                const std::string& text);

}  // namespace ZET::Deploy

#endif
