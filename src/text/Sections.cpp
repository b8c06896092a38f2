#include "text/Sections.h"

#include <algorithm>

#include "text/Lines.h"

namespace ZET::Text {

namespace {

std::string_view WithoutBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(kBlanks) + 1));
    return text;
}

bool IsComment(std::string_view text) {
    return !text.empty() && kCommentStarts.find(text.front()) != std::string_view::npos;
}

/// Whether `rest` may follow the name of a section.
bool IsBlankOrComment(std::string_view rest) {
    const std::string_view text = WithoutBlanks(rest);
    return text.empty() || (IsComment(text) && text.data() != rest.data());
}

bool IsEmpty(const TextLine& line) {
    return WithoutBlanks(line.text).empty();
}

/// Whether it is a comment in words, not a commented-out parameter.
bool IsRemark(const TextLine& line) {
    return IsComment(line.text) && line.text.find('=') == std::string_view::npos &&
           MarkerOf(line.text) == Marker::None;
}

/// The section's own lines: a new line belongs after them.
std::string_view OwnLines(std::string_view text, bool isLast) {
    const std::vector<TextLine> lines = SplitLines(text);
    std::size_t count = lines.size();
    if (!isLast) {
        while (count > 0 && IsRemark(lines[count - 1]))
            --count;
        if (count == 0 || !IsEmpty(lines[count - 1])) count = lines.size();
    }
    while (count > 0 && IsEmpty(lines[count - 1]))
        --count;
    if (count == lines.size()) return text;
    return text.substr(0, static_cast<std::size_t>(lines[count].text.data() - text.data()));
}

class Split {
  public:
    explicit Split(std::string_view text) : m_text(text) {}

    std::vector<Section> Run() {
        m_sections.emplace_back();
        std::string_view rest = m_text;
        while (!rest.empty())
            Take(rest);
        End(m_text.size());
        m_sections.back().lines = OwnLines(m_sections.back().lines, true);
        return std::move(m_sections);
    }

  private:
    void Take(std::string_view& rest) {
        const std::size_t begin = m_text.size() - rest.size();
        const std::string_view line = TakeLine(rest).text;
        ++m_number;
        const auto heading = m_follower.Take(line);
        if (m_follower.BeginsBlock()) m_block = m_isFormerLine ? m_formerLine : Place{begin, m_number - 1};
        m_isFormerLine = MarkerOf(line) == Marker::FormerLine;
        if (m_isFormerLine) m_formerLine = {begin, m_number - 1};
        if (heading) Begin(*heading, {begin, m_number - 1}, m_text.size() - rest.size());
    }

    struct Place {
        std::size_t at = 0;
        std::size_t linesBefore = 0;
    };

    void Begin(const SectionFollower::Heading& heading, const Place& line, std::size_t next) {
        // A block with a heading does not belong to the section before it: that ends where the block begins.
        End(heading.isInBlock ? std::max(m_block.at, m_begin) : line.at);
        m_sections.back().lines = OwnLines(m_sections.back().lines, false);
        m_begin = heading.isInBlock ? std::max(m_block.at, m_begin) : next;
        m_sections.push_back({heading.name, m_number, heading.isInBlock,
                              heading.isInBlock ? m_block.linesBefore : m_number, std::string_view()});
    }

    void End(std::size_t end) { m_sections.back().lines = m_text.substr(m_begin, end - m_begin); }

    std::string_view m_text;
    std::vector<Section> m_sections;
    SectionFollower m_follower;
    std::size_t m_begin = 0;  ///< where the open section begins
    std::size_t m_number = 0;
    bool m_isFormerLine = false;  ///< whether the previous line was one
    Place m_formerLine;
    Place m_block;
};

}  // namespace

std::optional<std::string_view> SectionNameOf(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (!line.starts_with('[')) return std::nullopt;
    std::size_t end = line.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    // "[[name]]": a section whose name includes brackets.
    while (end + 1 < line.size() && line[end + 1] == ']')
        ++end;
    if (!IsBlankOrComment(line.substr(end + 1))) return std::nullopt;
    return WithoutBlanks(line.substr(1, end - 1));
}

bool IsSetting(std::string_view line) {
    const std::string_view text = WithoutBlanks(line);
    return !text.empty() && !IsComment(text);
}

std::optional<SectionFollower::Heading> SectionFollower::Take(std::string_view line) {
    m_step = m_blocks.Take(MarkerOf(line));
    const auto name = SectionNameOf(line);
    if (!name) return std::nullopt;
    return Heading{*name, IsInBlock()};
}

std::vector<Section> SectionsOf(std::string_view text) {
    return Split(text).Run();
}

}  // namespace ZET::Text
