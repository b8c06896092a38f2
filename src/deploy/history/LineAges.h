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

/// What a line came with: an entry, or, where nobody recorded it, an edit of somebody else's.
struct LineAge {
    std::optional<HistoryEntry> entry;      ///< without its files
    std::optional<std::int64_t> editAfter;  ///< the last entry before the edit

    bool operator==(const LineAge& other) const {
        return editAfter == other.editAfter && entry.has_value() == other.entry.has_value() &&
               (!entry || entry->number == other.entry->number);
    }
};

/// Walks from a text back to older ones, and tells which step each line came with.
class LineWalk {
  public:
    /// The unified diff of two texts.
    using Differ = std::function<std::string(const std::string& older, const std::string& newer)>;

    LineWalk(std::string text, Differ differ);

    /// To an older text; null: there was no file. Lines that it lacks came with this step.
    void StepBack(const std::string* older, std::size_t step);

    /// Whether it is known of each line with which step it came.
    bool IsDone() const { return m_open.empty(); }

    /// For each line, at its number less one, the step; none: it is in the oldest text.
    const std::vector<std::optional<std::size_t>>& Steps() const { return m_steps; }

  private:
    struct Line {
        std::size_t index = 0;   ///< in the first text, from 0
        std::size_t number = 0;  ///< in this one, from 1
    };

    std::string m_text;
    Differ m_differ;
    std::vector<Line> m_open;
    std::vector<std::optional<std::size_t>> m_steps;
};

/// For each line of the file's text, at its number less one, what it came with; none: it is older than what
/// is recorded, or nobody can tell. An unusable history is reported as a warning.
std::vector<std::optional<LineAge>> AgesOfLines(Deployment& product, const std::string& file,
                                                const std::string& text);

}  // namespace ZET::Deploy

#endif
