#include "text/NoticeTexts.h"

#include <libintl.h>

#include <algorithm>
#include <optional>

#include "text/Lines.h"
#include "text/Markers.h"
#include "text/NoticeTranslations.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

constexpr char kModuleDomain[] = "libzet-config";
constexpr std::string_view kGap = "%s";

/// The part of the line in the text's gap, or empty if the text has no gap; none if the line does not fit.
std::optional<std::string_view> Fit(std::string_view line, std::string_view text) {
    line = WithoutCarriageReturn(line);
    const std::size_t gap = text.find(kGap);
    if (gap == std::string_view::npos) return line == text ? std::optional(line.substr(0, 0)) : std::nullopt;
    const std::string_view before = text.substr(0, gap);
    const std::string_view after = text.substr(gap + kGap.size());
    if (line.size() <= before.size() + after.size() || !line.starts_with(before) || !line.ends_with(after))
        return std::nullopt;
    return line.substr(before.size(), line.size() - before.size() - after.size());
}

bool Is(const std::vector<std::string>& text, NoticeLines lines) {
    return std::equal(
        text.begin(), text.end(), lines.begin(), lines.end(),
        [](const std::string& wanted, std::string_view line) { return Fit(line, wanted).has_value(); });
}

/// A quoted path, as a translation that is not available may have it.
std::string QuotedPath(std::string_view line) {
    const std::size_t begin = line.find("'/");
    const std::size_t end = line.rfind('\'');
    return begin == std::string_view::npos || end <= begin
               ? ""
               : std::string(line.substr(begin + 1, end - begin - 1));
}

/// Whether the line can belong to a notice in a language that is not available.
bool CanBeTranslated(std::string_view line) {
    return (line.empty() || line.starts_with('#')) && MarkerOf(line) == Marker::None &&
           line.find(MarkerText(Marker::FormerLine)) == std::string_view::npos;
}

}  // namespace

NoticeTexts::NoticeTexts() {
    for (const char* text : {ZETEditedNotice, ZETMadeNotice}) {
        Add(text);
        Add(dgettext(kModuleDomain, text));
    }
    for (const char* text : kTranslatedNotices)
        Add(text);
}

void NoticeTexts::Add(std::string_view text) {
    Lines lines;
    for (const TextLine& line : SplitLines(text))
        lines.emplace_back(line.text);
    // If a text ends its last line itself, the module adds another line feed.
    if (text.ends_with('\n')) {
        m_texts.push_back(lines);
        m_texts.back().emplace_back();
    }
    // The resulting empty line is easily lost; the text is complete without it.
    m_texts.push_back(std::move(lines));
}

std::size_t NoticeTexts::LengthFrom(NoticeLines lines) const {
    const auto found = std::find_if(m_texts.begin(), m_texts.end(), [&](const Lines& text) {
        return text.size() <= lines.size() && Is(text, lines.first(text.size()));
    });
    return found == m_texts.end() ? 0 : found->size();
}

std::size_t NoticeTexts::LengthBefore(NoticeLines lines) const {
    const auto found = std::find_if(m_texts.begin(), m_texts.end(), [&](const Lines& text) {
        return text.size() <= lines.size() && Is(text, lines.last(text.size()));
    });
    return found == m_texts.end() ? 0 : found->size();
}

std::size_t NoticeTexts::MostLines() const {
    std::size_t most = 0;
    for (const Lines& text : m_texts)
        most = std::max(most, text.size());
    return most;
}

bool NoticeTexts::HasLine(std::string_view line) const {
    const auto fits = [&](const std::string& wanted) { return Fit(line, wanted).has_value(); };
    return std::any_of(m_texts.begin(), m_texts.end(),
                       [&](const Lines& text) { return std::any_of(text.begin(), text.end(), fits); });
}

std::size_t NoticeTexts::ForeignLine(NoticeLines notice) const {
    const bool isOfKnownText = std::any_of(notice.begin(), notice.end(), [&](std::string_view line) {
        return WithoutCarriageReturn(line).size() > 1 && HasLine(line);
    });
    const auto foreign = std::find_if(notice.begin(), notice.end(), [&](std::string_view line) {
        return isOfKnownText ? !HasLine(line) : !CanBeTranslated(WithoutCarriageReturn(line));
    });
    return static_cast<std::size_t>(foreign - notice.begin());
}

std::string NoticeTexts::TemplateIn(NoticeLines notice) const {
    for (const Lines& text : m_texts) {
        // A text's first gap holds the template.
        const auto edit = std::find_if(text.begin(), text.end(), [](const std::string& line) {
            return line.find(kGap) != std::string::npos;
        });
        if (edit == text.end()) continue;
        for (const std::string_view line : notice) {
            const auto path = Fit(line, *edit);
            if (path) return std::string(*path);
        }
    }
    for (const std::string_view line : notice) {
        std::string path = QuotedPath(WithoutCarriageReturn(line));
        if (!path.empty()) return path;
    }
    return "";
}

std::optional<std::string> WithCommandOf(std::string text, std::string_view program, std::string_view other) {
    const std::string opening = "\n# $ ";
    const std::size_t command = text.find(opening + std::string(program) + " commit-config");
    if (command == std::string::npos || command > text.find(ZETCommentEndMarker)) return std::nullopt;
    text.replace(command + opening.size(), program.size(), other);
    return text;
}

}  // namespace ZET::Text
