#include "TemplateCheck.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// Both for one line, and beyond what the line itself can hold.
constexpr std::size_t kMostReplacements = 100'000;
constexpr std::size_t kLongestLine = std::size_t{16} << 20;
constexpr std::size_t kMostUnknownOfLine = 100;  ///< what a reader can make use of

std::size_t LongestKey(const StringMap& values) {
    std::size_t longest = 0;
    for (const auto& [placeholder, value] : values)
        longest = std::max(longest, placeholder.size());
    return longest;
}

/// Follows the expansion of one line as the module performs it: a value is put in the place of its
/// placeholder and searched in its turn. What is left of the line is kept back to front, so that its next
/// byte is the last one, and replacing a placeholder moves no other byte.
class LineExpansion {
  public:
    enum class Verdict { Fine, NoValue, NoEnd, Endless };

    /// `longestKey` is that of `values`.
    LineExpansion(std::string_view line, const StringMap& values, std::size_t longestKey,
                  std::set<std::string>* used)
        : m_values(values),
          m_longestKey(longestKey),
          m_used(used),
          m_left(line.rbegin(), line.rend()),
          m_lineSize(line.size()),
          m_lineLeft(line.size()) {}

    /// Goes on to the next thing that is wrong; `Fine` when the line ends first. After `NoEnd` and `Endless`
    /// there is no going on.
    Verdict Next() {
        while (GoToPlaceholder()) {
            const std::size_t end = FindEnd();
            if (end == std::string::npos) return Verdict::NoEnd;
            // Of one that is too long to have a value, the beginning is enough to name it.
            const std::size_t length =
                std::min(m_left.size() - end, std::max(m_longestKey, kLongestName) + 1);
            m_placeholder.assign(m_left.rbegin(), m_left.rbegin() + static_cast<std::ptrdiff_t>(length));
            const auto value = m_values.find(m_placeholder);
            if (value == m_values.end()) {
                Skip(1);
                return Verdict::NoValue;
            }
            if (!Replace(end, value->second)) return Verdict::Endless;
        }
        return Verdict::Fine;
    }

    const std::string& Placeholder() const { return m_placeholder; }

    /// Where the placeholder of the line begins that led to the verdict; bytes, from 1.
    int Column() const { return static_cast<int>(m_column); }

  private:
    std::size_t FindEnd() {
        if (m_end >= m_left.size()) m_end = m_left.rfind('}');
        return m_end;
    }

    void Skip(std::size_t count) {
        m_left.resize(m_left.size() - count);
        m_written += count;
        m_lineLeft = std::min(m_lineLeft, m_left.size());
    }

    bool GoToPlaceholder() {
        for (;;) {
            const std::size_t dollar = m_left.rfind('$');
            if (dollar == std::string::npos || dollar == 0) {
                Skip(m_left.size());
                return false;
            }
            Skip(m_left.size() - 1 - dollar);
            if (m_left[dollar - 1] == '{') break;
            Skip(1);
        }
        if (m_left.size() == m_lineLeft) m_column = m_lineSize - m_left.size() + 1;
        return true;
    }

    bool Replace(std::size_t end, const std::string& value) {
        if (m_used != nullptr) m_used->insert(m_placeholder);
        m_left.resize(end);
        m_lineLeft = std::min(m_lineLeft, m_left.size());
        m_left.append(value.rbegin(), value.rend());
        m_end = std::string::npos;
        return ++m_replacements <= kMostReplacements + m_lineSize &&
               m_written + m_left.size() <= kLongestLine + m_lineSize;
    }

    static constexpr std::size_t kLongestName = 100;

    const StringMap& m_values;
    std::size_t m_longestKey;
    std::set<std::string>* m_used;
    std::string m_left;
    std::size_t m_lineSize;
    std::size_t m_lineLeft;  ///< how many bytes of `m_left` are the line's own; the others come from values
    std::size_t m_written = 0;
    std::size_t m_replacements = 0;
    std::size_t m_column = 0;
    std::size_t m_end = std::string::npos;  ///< where the next "}" is, as long as nothing was put before it
    std::string m_placeholder;
};

/// A pair of markers and the region that is open between them.
struct Region {
    std::string_view begin;
    std::string_view end;
    int openedAt = 0;            ///< 0: not open
    bool isOtherInside = false;  ///< a region of the other kind began in it, which was told
};

class TemplateChecker {
  public:
    TemplateChecker(const std::string& file, const StringMap& values, std::set<std::string>* used)
        : m_file(file), m_values(values), m_longestKey(LongestKey(values)), m_used(used) {
        for (const auto& value : values)
            if (value.second.find('$') == std::string::npos) m_plainValues.emplace(value.first, &value);
    }

    void Take(std::string_view line) {
        ++m_line;
        if (!m_hasText) CheckFirstLine(line);
        if (line.starts_with('#')) {
            CheckMarker(line);
        } else {
            CheckPlaceholders(line);
        }
    }

    std::vector<Problem> End() {
        for (const Region& region : {m_block, m_comment})
            CheckClosed(region);
        return std::move(m_problems);
    }

  private:
    /// Whether every placeholder of the line has a value, and none leads to another: most lines are like
    /// that, and cost two searches.
    bool IsPlain(std::string_view line) {
        std::size_t left = kLongestLine;
        for (std::size_t place = 0; (place = line.find("${", place)) != std::string_view::npos;) {
            const std::size_t end = line.find('}', place);
            if (end == std::string_view::npos) return false;
            const auto value = m_plainValues.find(line.substr(place, end + 1 - place));
            if (value == m_plainValues.end() || value->second->second.size() > left) return false;
            left -= value->second->second.size();
            if (m_used != nullptr) m_used->insert(value->second->first);
            place = end + 1;
        }
        return true;
    }

    void CheckPlaceholders(std::string_view line) {
        if (IsPlain(line)) return;
        using Verdict = LineExpansion::Verdict;
        LineExpansion expansion(line, m_values, m_longestKey, m_used);
        std::set<std::pair<int, std::string>> unknown;
        for (;;) {
            switch (expansion.Next()) {
                case Verdict::Fine:
                    return;
                case Verdict::NoValue:
                    // What stands in a template comment never reaches the target.
                    if (m_comment.openedAt > 0 && m_comment.begin == ZETTemplateCommentMarker) break;
                    if (unknown.size() == kMostUnknownOfLine ||
                        !unknown.emplace(expansion.Column(), expansion.Placeholder()).second)
                        break;
                    Add(expansion.Column(),
                        "placeholder " + Quoted(expansion.Placeholder()) + " has no value",
                        "use one that \"values\" lists, or correct its name", expansion.Placeholder());
                    break;
                case Verdict::NoEnd:
                    return Add(expansion.Column(), "\"${\" has no \"}\" after it in its line",
                               "close the placeholder, or begin the line with #");
                case Verdict::Endless:
                    return Add(expansion.Column(),
                               "the expansion of " + Quoted(expansion.Placeholder()) +
                                   " does not end within 100,000 replacements and 16 MiB",
                               "take the placeholder that leads back to it out of the values",
                               expansion.Placeholder());
            }
        }
    }

    /// The module takes a notice there for the one it would write, wherever in the line the marker is.
    void CheckFirstLine(std::string_view line) {
        m_hasText = !line.empty();
        const std::size_t place = line.find(ZETNoticeMarker);
        if (place == std::string_view::npos) return;
        Add(static_cast<int>(place) + 1,
            Quoted(ZETNoticeMarker) + " in its first line keeps the notice out that names the template",
            "take the notice out: a commit writes its own");
    }

    void CheckMarker(std::string_view line) {
        if (line.starts_with(ZETNoticeMarker) || line.starts_with(ZETTemplateCommentMarker)) {
            m_comment.begin = line.starts_with(ZETNoticeMarker) ? std::string_view(ZETNoticeMarker)
                                                                : ZETTemplateCommentMarker;
            Open(m_comment, m_block);
        } else if (line.starts_with(ZETCommentEndMarker)) {
            Close(m_comment);
        } else if (line.starts_with(ZETBeginMarker)) {
            Open(m_block, m_comment);
        } else if (line.starts_with(ZETEndMarker)) {
            Close(m_block);
        }
    }

    void Open(Region& region, Region& other) {
        if (region.openedAt > 0) {
            AddInside(region, region);
        } else if (other.openedAt > 0 && !other.isOtherInside) {
            AddInside(region, other);
            other.isOtherInside = true;
        }
        region.openedAt = m_line;
        region.isOtherInside = false;
    }

    void AddInside(const Region& inner, const Region& outer) {
        Add(1,
            Quoted(inner.begin) + " inside a region that line " + std::to_string(outer.openedAt) + " opened",
            "end that region before this line");
    }

    void Close(Region& region) {
        if (region.openedAt == 0) {
            Add(1, Quoted(region.end) + " ends no region", "add its begin, or take the line out");
        }
        region.openedAt = 0;
    }

    void CheckClosed(const Region& region) {
        if (region.openedAt == 0) return;
        m_line = region.openedAt;
        Add(1, Quoted(region.begin) + " has no end", "add a line " + Quoted(region.end));
    }

    static std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

    void Add(int column, const std::string& text, const std::string& remedy, const std::string& quoted = "") {
        m_problems.push_back({m_file, m_line, column, text, remedy, quoted});
    }

    const std::string& m_file;
    const StringMap& m_values;
    std::size_t m_longestKey;
    std::unordered_map<std::string_view, const StringMap::value_type*> m_plainValues;  ///< those without "$"
    std::set<std::string>* m_used;
    int m_line = 0;
    bool m_hasText = false;  ///< a line was taken that is not empty
    Region m_block{ZETBeginMarker, ZETEndMarker};
    Region m_comment{ZETTemplateCommentMarker, ZETCommentEndMarker};
    std::vector<Problem> m_problems;
};

}  // namespace

std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, const StringMap& values,
                                   std::set<std::string>* used) {
    TemplateChecker checker(file, values, used);
    lines([&](std::string_view line) { checker.Take(line); });
    return checker.End();
}

}  // namespace ZET
