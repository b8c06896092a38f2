#include "text/LineOrigin.h"

#include <algorithm>
#include <optional>
#include <string>

#include "text/LineExpansion.h"
#include "text/Lines.h"
#include "text/Placeholders.h"
#include "text/TemplateCheck.h"

namespace ZET::Text {

namespace {

struct NumberedLine {
    std::size_t number = 0;
    std::string_view text;
};

bool IsNoticeMarkerIn(std::string_view line) {
    return line.find(MarkerText(Marker::Notice)) != std::string_view::npos;
}

/// A line that a template line makes.
struct RenderedLine {
    std::size_t number = 0;             ///< of the template line
    std::string_view text;              ///< of the template line
    std::optional<std::string> part{};  ///< the line itself, if values make several of the template line

    bool CanBe(std::string_view line) const { return part ? *part == line : CanBecome(text, line); }
};

/// Finds the template lines of which values make several lines.
class LineParts {
  public:
    explicit LineParts(const StringMap& values) : m_values(values) {}

    void Add(std::size_t number, std::string_view line, std::vector<RenderedLine>& lines) const {
        const std::string expanded = m_values.hasLineFeeds ? ExpansionOf(line) : "";
        if (expanded.find('\n') == std::string::npos) return lines.push_back({number, line});
        for (std::string_view rest = expanded;;) {
            const std::size_t end = rest.find('\n');
            lines.push_back({number, line, std::string(rest.substr(0, end))});
            if (end == std::string_view::npos) return;
            rest.remove_prefix(end + 1);
        }
    }

  private:
    /// Empty if the module would not expand the line.
    std::string ExpansionOf(std::string_view line) const {
        if (HasNoPlaceholders(line) || line.find(kPlaceholderBegin) == std::string_view::npos) return "";
        LineExpansion expansion(line, m_values.all, m_values.longestKey, nullptr);
        expansion.Keep(LineExpansion::kLongestLine + line.size());
        return expansion.Next() == LineExpansion::Verdict::Fine ? expansion.Expanded() : "";
    }

    const ValuesToCheck m_values;
};

/// The template lines that reach the file made from it: not the empty lines at its top, and not its comments.
struct RenderedLines {
    std::vector<RenderedLine> lines;
    bool hasOwnNotice = false;  ///< then the module adds none
};

RenderedLines LinesThatRender(std::string_view templateText, const StringMap& values) {
    const std::vector<TextLine> all = SplitLines(templateText);
    const auto top =
        std::find_if(all.begin(), all.end(), [](const TextLine& line) { return !line.text.empty(); });
    RenderedLines rendered;
    rendered.hasOwnNotice = top != all.end() && IsNoticeMarkerIn(top->text);
    const LineParts parts(values);
    RegionFollower comments = RegionFollower::OfTemplateComments();
    for (auto line = top; line != all.end(); ++line) {
        const RegionStep step = comments.Take(MarkerOf(line->text));
        if (!IsOutside(step)) continue;
        parts.Add(static_cast<std::size_t>(line - all.begin()) + 1, line->text, rendered.lines);
    }
    return rendered;
}

/// The file's lines before managed blocks changed them. An appended block includes the empty line before it.
std::vector<NumberedLine> LinesBeforeEdits(const ManagedText& file, bool hasOwnNotice) {
    std::vector<NumberedLine> lines;
    for (const ManagedRegion& region : file.Regions()) {
        if (region.kind == RegionKind::Block) {
            const bool isAppended = region.formerLine == 0;
            if (isAppended && !lines.empty() && lines.back().number + 1 == region.first &&
                lines.back().text.empty())
                lines.pop_back();
            continue;
        }
        if (region.kind == RegionKind::Notice && !hasOwnNotice) continue;
        for (std::size_t number = region.first; number <= region.last; ++number) {
            const bool isFormer = region.kind == RegionKind::FormerLine;
            lines.push_back({number, isFormer ? file.FormerText(number) : file.Line(number).text});
        }
    }
    return lines;
}

/// Matches the two from the top and from the bottom, as far as the lines fit.
class Alignment {
  public:
    Alignment(const std::vector<NumberedLine>& file, const std::vector<RenderedLine>& fromTemplate,
              std::vector<LineOrigin>& origins)
        : m_file(file), m_template(fromTemplate), m_origins(origins) {}

    void Align() {
        if (m_file.size() == m_template.size()) {
            for (std::size_t i = 0; i < m_file.size(); ++i)
                Set(i, i, Fits(i, i) ? LineOrigin::Certainty::Rendered : LineOrigin::Certainty::Differs);
            return;
        }
        for (const NumberedLine& line : m_file)
            m_origins[line.number - 1].certainty = LineOrigin::Certainty::Unknown;
        const std::size_t most = std::min(m_file.size(), m_template.size());
        std::size_t top = 0;
        for (; top < most && Fits(top, top); ++top)
            Set(top, top, LineOrigin::Certainty::Rendered);
        for (std::size_t bottom = 1; bottom <= most - top; ++bottom) {
            const std::size_t i = m_file.size() - bottom;
            const std::size_t j = m_template.size() - bottom;
            if (!Fits(i, j)) break;
            Set(i, j, LineOrigin::Certainty::Rendered);
        }
    }

  private:
    bool Fits(std::size_t i, std::size_t j) const { return m_template[j].CanBe(m_file[i].text); }

    void Set(std::size_t i, std::size_t j, LineOrigin::Certainty certainty) {
        m_origins[m_file[i].number - 1] = {certainty, m_template[j].number};
    }

    const std::vector<NumberedLine>& m_file;
    const std::vector<RenderedLine>& m_template;
    std::vector<LineOrigin>& m_origins;
};

}  // namespace

bool CanBecome(std::string_view templateLine, std::string_view line) {
    const std::vector<std::string_view> pieces = PiecesBetweenPlaceholders(templateLine);
    if (pieces.size() == 1) return line == templateLine;
    if (!line.starts_with(pieces.front())) return false;
    line.remove_prefix(pieces.front().size());
    if (!line.ends_with(pieces.back())) return false;
    line.remove_suffix(pieces.back().size());
    for (auto piece = pieces.begin() + 1; piece != pieces.end() - 1; ++piece) {
        const std::size_t position = line.find(*piece);
        if (position == std::string_view::npos) return false;
        line.remove_prefix(position + piece->size());
    }
    return true;
}

std::vector<LineOrigin> TraceLines(const ManagedText& file, std::string_view templateText,
                                   const StringMap& values) {
    std::vector<LineOrigin> origins(file.LineCount());
    const RenderedLines rendered = LinesThatRender(templateText, values);
    Alignment(LinesBeforeEdits(file, rendered.hasOwnNotice), rendered.lines, origins).Align();
    return origins;
}

}  // namespace ZET::Text
