#include "text/Explanation.h"

#include <utility>

#include "text/Placeholders.h"

namespace ZET::Text {

namespace {

using Kind = ExplainedLines::Kind;

class Explainer {
  public:
    using Take = std::function<void(const ExplainedLines& lines)>;

    Explainer(const ManagedText& text, bool isMade, const std::vector<TextLine>& templateLines,
              const std::vector<LineOrigin>& origins, const Take& take)
        : m_text(text), m_isMade(isMade), m_templateLines(templateLines), m_origins(origins), m_take(take) {}

    void Explain() {
        for (const ManagedRegion& region : m_text.Regions()) {
            if (region.kind == RegionKind::Ordinary) {
                for (std::size_t number = region.first; number <= region.last; ++number)
                    AddOrdinary(number);
            } else {
                AddRegion(region);
            }
        }
        Flush();
    }

  private:
    /// Passes on the previous lines and starts new ones, which later lines may continue.
    void Begin(ExplainedLines lines) {
        Flush();
        m_last = std::move(lines);
        m_hasLast = true;
    }

    void Flush() {
        if (m_hasLast) m_take(m_last);
        m_hasLast = false;
    }

    void AddRegion(const ManagedRegion& region) {
        ExplainedLines lines{KindOf(region),  region.first,      region.last,
                             region.isClosed, region.formerLine, region.block};
        if (region.kind == RegionKind::FormerLine) {
            lines.formerText = m_text.FormerText(region.first);
            SetTemplateLine(lines, region.first);
        } else if (region.kind == RegionKind::Block) {
            AddContent(lines);
        }
        Begin(std::move(lines));
    }

    static Kind KindOf(const ManagedRegion& region) {
        switch (region.kind) {
            case RegionKind::FormerLine:
                return region.block == 0 ? Kind::LoneFormerLine : Kind::FormerLine;
            case RegionKind::Block:
                return Kind::Block;
            case RegionKind::Notice:
                return Kind::Notice;
            case RegionKind::TemplateComment:
                return Kind::TemplateComment;
            case RegionKind::Ordinary:
                break;
        }
        return Kind::Own;
    }

    void AddContent(ExplainedLines& block) {
        for (std::size_t number = block.first; number <= block.last; ++number) {
            if (m_text.Line(number).IsContent()) block.content.push_back(m_text.Line(number).text);
        }
        if (block.formerLine == 0) return;
        block.formerText = m_text.FormerText(block.formerLine);
        SetTemplateLine(block, block.formerLine);
    }

    /// Sets the template line of what a block replaced.
    void SetTemplateLine(ExplainedLines& lines, std::size_t number) const {
        if (!m_isMade || OriginOf(number).certainty != LineOrigin::Certainty::Rendered) return;
        lines.templateLine = OriginOf(number).templateLine;
        lines.placeholders = PlaceholdersAt(lines.templateLine);
    }

    void AddOrdinary(std::size_t number) {
        ExplainedLines line{OrdinaryKind(number), number, number};
        if (line.kind == Kind::FromTemplate || line.kind == Kind::Differing) {
            line.templateLine = OriginOf(number).templateLine;
            line.placeholders = PlaceholdersAt(line.templateLine);
        }
        if (m_hasLast && Continues(m_last, line)) {
            m_last.last = number;
        } else {
            Begin(std::move(line));
        }
    }

    Kind OrdinaryKind(std::size_t number) const {
        if (IsGap(number)) return Kind::Gap;
        if (!m_isMade) return Kind::Own;
        switch (OriginOf(number).certainty) {
            case LineOrigin::Certainty::Rendered:
                return Kind::FromTemplate;
            case LineOrigin::Certainty::Differs:
                return Kind::Differing;
            default:
                return Kind::Untraced;
        }
    }

    bool IsGap(std::size_t number) const {
        if (!m_text.Line(number).text.empty() || number == m_text.LineCount()) return false;
        const ManagedRegion& next = m_text.RegionOf(number + 1);
        return next.kind == RegionKind::Block && next.formerLine == 0;
    }

    static bool Continues(const ExplainedLines& former, const ExplainedLines& line) {
        if (former.kind != line.kind || former.last + 1 != line.first) return false;
        if (line.templateLine == 0) return former.templateLine == 0;
        return former.placeholders.empty() && line.placeholders.empty() &&
               former.templateLine + (line.first - former.first) == line.templateLine;
    }

    const LineOrigin& OriginOf(std::size_t number) const { return m_origins[number - 1]; }

    std::vector<std::string> PlaceholdersAt(std::size_t templateLine) const {
        return PlaceholdersOf(m_templateLines[templateLine - 1].text);
    }

    const ManagedText& m_text;
    bool m_isMade;
    const std::vector<TextLine>& m_templateLines;
    const std::vector<LineOrigin>& m_origins;
    const Take& m_take;
    ExplainedLines m_last;
    bool m_hasLast = false;
};

}  // namespace

const char* NameOf(ExplainedLines::Kind kind) {
    switch (kind) {
        case ExplainedLines::Kind::Own:
            return "own";
        case ExplainedLines::Kind::Gap:
            return "gap";
        case ExplainedLines::Kind::FormerLine:
        case ExplainedLines::Kind::LoneFormerLine:
            return "former-line";
        case ExplainedLines::Kind::Block:
            return "block";
        case ExplainedLines::Kind::Notice:
            return "notice";
        case ExplainedLines::Kind::TemplateComment:
            return "template-comment";
        case ExplainedLines::Kind::FromTemplate:
            return "template";
        case ExplainedLines::Kind::Differing:
            return "differing";
        case ExplainedLines::Kind::Untraced:
            break;
    }
    return "untraced";
}

TextExplanation::TextExplanation(const ManagedText& text, bool isMade, std::string_view templateText,
                                 const StringMap& values)
    : m_text(text), m_isMade(isMade), m_templateLines(SplitLines(templateText)) {
    if (isMade) m_origins = TraceLines(text, templateText, values);
}

void TextExplanation::ForEach(const std::function<void(const ExplainedLines& lines)>& take) const {
    Explainer(m_text, m_isMade, m_templateLines, m_origins, take).Explain();
}

ExplainedLines TextExplanation::Of(std::size_t line) const {
    ExplainedLines found;
    ForEach([&](const ExplainedLines& lines) {
        if (lines.first <= line && line <= lines.last) found = lines;
    });
    const bool isSingle = found.kind == Kind::Own || found.kind == Kind::FromTemplate ||
                          found.kind == Kind::Differing || found.kind == Kind::Untraced;
    if (!isSingle) return found;
    if (found.templateLine != 0) found.templateLine += line - found.first;
    found.first = found.last = line;
    return found;
}

}  // namespace ZET::Text
