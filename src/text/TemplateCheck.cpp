#include "text/TemplateCheck.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "posix/ByteBlock.h"
#include "text/FirstLine.h"
#include "text/LineExpansion.h"
#include "text/Lines.h"
#include "text/Placeholders.h"
#include "text/Regions.h"
#include "text/Words.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

constexpr std::size_t kMostUnknownOfLine = 100;  ///< more would not help a user
constexpr std::size_t kStart = 64;               ///< of a line; longer than the longest marker
constexpr std::size_t kMostKept = std::size_t{16} << 10;

/// The regions of one kind, and what was reported about the open one.
struct TemplateRegions {
    RegionFollower follower;
    bool isOtherInside = false;  ///< a region of the other kind that began in it was reported
};

/// Whether the beginning and end of a long line suffice to judge it. They do if the beginning contains more
/// than one character, since a line that must come first may consist of a single one.
bool CanBeShortened(std::string_view line) {
    const std::string_view start = line.substr(0, kStart);
    return start.find_first_not_of(kUsualBlanks) < start.find_last_not_of(kUsualBlanks);
}

void ShortenMiddle(std::string& line) {
    constexpr std::size_t kEnd = std::size(ZETNoticeMarker);
    // No marker contains a zero byte.
    line.replace(kStart, line.size() - kStart - kEnd, 1, '\0');
}

std::string_view EndOf(Marker begin) {
    return begin == Marker::BlockBegin ? ZETEndMarker : ZETCommentEndMarker;
}

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

class TemplateChecker {
  public:
    TemplateChecker(const std::string& file, ValuesToCheck& values, bool hasNotice)
        : m_file(file), m_values(values), m_hasNotice(hasNotice) {}

    /// After the first lines, only placeholders and markers matter: other lines are only counted, not
    /// examined one by one, which takes half of the time.
    void TakeLines(std::string_view lines) {
        PlaceholderWalk placeholders(lines);
        std::optional<std::size_t> marker;
        std::optional<std::size_t> other;
        for (std::size_t at = 0; at < lines.size();) {
            std::string_view left = lines.substr(at);
            if (m_hasFirstLine) {
                if (!marker || *marker < at)
                    marker = at + std::min(FindBytes(left, kMarkerStart), left.size());
                if (!other || *other < at) other = EndOfPlain(lines, placeholders, at);
                Skip(left, std::min(*marker, *other) - at);
            }
            if (!left.empty()) Take(TakeLine(left).text);
            at = lines.size() - left.size();
        }
    }

    void Take(std::string_view line) {
        ++m_line;
        if (HasNoPlaceholders(line)) return CheckRendered(line, line);
        const std::size_t wanted = WantedOf(line);
        m_rendered.clear();
        m_hasNoticeBefore = false;
        m_isRenderedEnough = false;
        m_mayHaveMarkers =
            wanted > kStart && (m_values.hasSigns || line.find(kMarkerStart.front()) != line.npos);
        CheckPlaceholders(line, wanted);
        if (wanted == 0) return;
        for (std::string_view rendered = m_rendered; !rendered.empty();)
            CheckRendered(TakeLine(rendered).text, line);
    }

    std::vector<Problem> End() {
        for (const TemplateRegions& regions : {m_blocks, m_comments})
            CheckClosed(regions.follower);
        return std::move(m_problems);
    }

  private:
    /// The position of the next placeholder whose line must be examined by itself: any other has a plain
    /// value and does not begin its line. `at` is the begin of a line. The size of `lines` if there is none.
    std::size_t EndOfPlain(std::string_view lines, PlaceholderWalk& placeholders, std::size_t at) {
        std::size_t lineBegin = at;
        std::size_t left = LineExpansion::kLongestLine;
        for (PlaceholderRange range; (range = placeholders.NextFrom(at)).IsThere();) {
            const std::size_t ofLines = LinesBefore(lines.substr(at), range.begin - at).size();
            if (ofLines > 0) lineBegin = at + ofLines;
            const bool isComment = HasNoPlaceholders(lines.substr(lineBegin));
            if (!isComment && !IsPassedOver(range, lines, lineBegin, left)) return range.begin;
            at = isComment ? range.begin + 1 : range.end;
        }
        return lines.size();
    }

    bool IsPassedOver(const PlaceholderRange& range, std::string_view lines, std::size_t lineBegin,
                      std::size_t& left) {
        if (m_values.hasLineFeeds || !range.IsClosed() || range.begin == lineBegin) return false;
        const std::string* const value = m_values.plain.Find(lines, range);
        if (value == nullptr || value->size() > left) return false;
        left -= value->size();
        return true;
    }

    /// Skips the lines before the one at `place`.
    void Skip(std::string_view& lines, std::size_t place) {
        const std::string_view others = LinesBefore(lines, place);
        m_line += static_cast<int>(CountLines(others));
        lines.remove_prefix(others.size());
    }

    /// How much of the rendered line must be examined: all of it until the first lines are found, then only
    /// what can be a marker.
    std::size_t WantedOf(std::string_view line) const {
        if (!m_hasText || !m_hasFirstLine || m_values.hasLineFeeds) return std::string::npos;
        return line.starts_with(kPlaceholderBegin) ? kStart : 0;
    }

    void Render(std::string_view text, std::size_t wanted) {
        if (m_isRenderedEnough || m_rendered.size() >= wanted) return;
        m_rendered.append(text.substr(0, wanted - m_rendered.size()));
        if (m_rendered.size() > kMostKept && !m_values.hasLineFeeds && CanBeShortened(m_rendered)) Shorten();
    }

    /// A line may be as long as the template, so it is searched in pieces that are not kept; and no further
    /// if it cannot contain a marker of a notice.
    void Shorten() {
        m_hasNoticeBefore = m_hasNoticeBefore || HasNoticeMarker(m_rendered);
        m_isRenderedEnough = !m_mayHaveMarkers;
        ShortenMiddle(m_rendered);
    }

    static bool HasNoticeMarker(std::string_view text) {
        return text.find(ZETNoticeMarker) != std::string_view::npos;
    }

    /// Whether every placeholder of the line has a value that leads to no other one: most lines are like that
    /// and cost two searches.
    bool IsPlain(std::string_view line, std::size_t wanted) {
        std::size_t left = LineExpansion::kLongestLine;
        std::size_t done = 0;
        PlaceholderWalk placeholders(line);
        for (PlaceholderRange range; (range = placeholders.NextFrom(done)).IsThere(); done = range.end) {
            const std::string* const value = range.IsClosed() ? m_values.plain.Find(line, range) : nullptr;
            if (value == nullptr || value->size() > left) return false;
            left -= value->size();
            Render(line.substr(done, range.begin - done), wanted);
            Render(*value, wanted);
        }
        Render(line.substr(done), wanted);
        return true;
    }

    void CheckPlaceholders(std::string_view line, std::size_t wanted) {
        if (IsPlain(line, wanted)) return;
        LineExpansion expansion(line, m_values.all, m_values.longestKey, m_values.used);
        expansion.Keep(wanted);
        TellVerdicts(expansion);
        m_rendered = expansion.Expanded();
        m_hasNoticeBefore = false;
    }

    void TellVerdicts(LineExpansion& expansion) {
        using Verdict = LineExpansion::Verdict;
        std::set<std::pair<int, std::string>> unknown;
        for (;;) {
            switch (expansion.Next()) {
                case Verdict::Fine:
                    return;
                case Verdict::NoValue:
                    // Text in a template comment never reaches the target.
                    if (IsInTemplateComment()) break;
                    if (unknown.size() == kMostUnknownOfLine ||
                        !unknown.emplace(expansion.Column(), expansion.Placeholder()).second)
                        break;
                    Add(expansion.Column(),
                        Words("placeholder %s has no value", Quoted(expansion.Placeholder())),
                        _("use one that \"values\" lists, correct its name, or write $NAME for another "
                          "program"),
                        expansion.Placeholder());
                    break;
                case Verdict::NoEnd:
                    return Add(expansion.Column(), _("\"${\" has no \"}\" after it in its line"),
                               _("close the placeholder, take \"${\" out, or begin the line with #"));
                case Verdict::Endless:
                    return Add(
                        expansion.Column(),
                        Words("the expansion of %s does not end within 100,000 replacements and 16 MiB",
                              Quoted(expansion.Placeholder())),
                        _("take the placeholder that leads back to it out of the values"),
                        expansion.Placeholder());
            }
        }
    }

    bool IsInTemplateComment() const { return m_comments.follower.Opener() == Marker::TemplateComment; }

    /// Checks a rendered line; `line` is the template line that it comes from.
    void CheckRendered(std::string_view text, std::string_view line) {
        if (m_hasNotice && !m_hasText && !text.empty()) CheckNoticeIn(text, line);
        m_hasText = m_hasText || !text.empty();
        const bool wasInComment = IsInTemplateComment();
        const Marker marker = MarkerOf(text);
        if (marker != Marker::None) {
            if (!HasNoPlaceholders(line)) TellMadeMarker(marker, line);
            CheckMarker(m_blocks, m_comments, marker);
            CheckMarker(m_comments, m_blocks, marker);
        }
        if (wasInComment || IsInTemplateComment() || m_hasFirstLine || text.empty()) return;
        m_hasFirstLine = true;
        if (!m_hasNotice || !MustComeFirst(text)) return;
        Add(1,
            _("the programs that read the file need this line as its first, and the notice comes before it"),
            _("say notice = false in its entry of the list"));
    }

    /// If the first line contains a notice's marker anywhere, the module adds no notice of its own.
    void CheckNoticeIn(std::string_view text, std::string_view line) {
        if (!m_hasNoticeBefore && !HasNoticeMarker(text)) return;
        const std::size_t place = line.find(ZETNoticeMarker);
        Add(place == std::string_view::npos ? ColumnOfPlaceholder(line) : static_cast<int>(place) + 1,
            Words("%s in its first line keeps the notice out that names the template",
                  Quoted(ZETNoticeMarker)),
            _("take the notice out: a commit writes its own"));
    }

    void TellMadeMarker(Marker marker, std::string_view line) {
        Add(ColumnOfPlaceholder(line),
            Words("a value makes this line begin with %s, which marks lines of the system itself",
                  Quoted(MarkerText(marker))),
            _("give the placeholder another value"));
    }

    static int ColumnOfPlaceholder(std::string_view line) {
        return static_cast<int>(line.find(kPlaceholderBegin)) + 1;
    }

    void CheckMarker(TemplateRegions& regions, TemplateRegions& others, Marker marker) {
        const std::size_t openedAt = regions.follower.OpenedAt();
        switch (regions.follower.Take(marker, static_cast<std::size_t>(m_line))) {
            case RegionStep::StrayEnd:
                return Add(1, Words("%s ends no region", Quoted(MarkerText(marker))),
                           _("add its begin, or take the line out"));
            case RegionStep::NestedBegin:
                return AddInside(marker, openedAt);
            case RegionStep::Begin:
                regions.isOtherInside = false;
                if (!others.follower.IsInside() || others.isOtherInside) return;
                others.isOtherInside = true;
                return AddInside(marker, others.follower.OpenedAt());
            default:
                return;
        }
    }

    void AddInside(Marker inner, std::size_t openedAt) {
        Add(1,
            Words("%s inside a region that line %s opened", Quoted(MarkerText(inner)),
                  std::to_string(openedAt)),
            _("end that region before this line"));
    }

    void CheckClosed(const RegionFollower& follower) {
        if (!follower.IsInside()) return;
        m_line = static_cast<int>(follower.OpenedAt());
        Add(1, Words("%s has no end", Quoted(MarkerText(follower.Opener()))),
            Words("add a line %s", Quoted(EndOf(follower.Opener()))));
    }

    void Add(int column, const std::string& text, const std::string& remedy, const std::string& quoted = "") {
        m_problems.push_back({m_file, m_line, column, text, remedy, quoted});
    }

    const std::string& m_file;
    ValuesToCheck& m_values;
    const bool m_hasNotice;
    int m_line = 0;
    std::string m_rendered;          ///< the rendered line, as far as it is needed
    bool m_hasNoticeBefore = false;  ///< in the part of the line that was not kept
    bool m_mayHaveMarkers = false;   ///< the line may contain one, as it is or rendered
    bool m_isRenderedEnough = false;
    bool m_hasText = false;       ///< there was a line that does not become empty
    bool m_hasFirstLine = false;  ///< the same, outside of template comments
    TemplateRegions m_blocks{RegionFollower::OfBlocks()};
    TemplateRegions m_comments{RegionFollower::OfComments()};
    std::vector<Problem> m_problems;
};

}  // namespace

ValuesToCheck::ValuesToCheck(const StringMap& values, std::set<std::string>* namesUsed)
    : all(values), used(namesUsed), plain(values, namesUsed), hasSigns(plain.Have(kMarkerStart.front())) {
    for (const auto& [placeholder, value] : values) {
        longestKey = std::max(longestKey, placeholder.size());
        hasLineFeeds = hasLineFeeds || value.find('\n') != std::string::npos;
    }
}

std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, ValuesToCheck& values,
                                   bool hasNotice) {
    TemplateChecker checker(file, values, hasNotice);
    lines([&](std::string_view piece) { checker.TakeLines(piece); });
    return checker.End();
}

std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, const StringMap& values,
                                   std::set<std::string>* used, bool hasNotice) {
    ValuesToCheck toCheck(values, used);
    return CheckTemplate(file, lines, toCheck, hasNotice);
}

}  // namespace ZET::Text
