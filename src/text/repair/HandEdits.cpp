#include <algorithm>
#include <utility>

#include "text/repair/MarkerDamage.h"
#include "text/repair/NearMarker.h"

namespace ZET {

namespace {

constexpr char kBlanks[] = " \t\r";
constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr int kMostJoinedLines = 8;  ///< in one line, that are taken apart again

/// A place where a marker stands, or could be meant.
struct Token {
    enum class Form { Exact, Near, Glued };

    std::size_t line = 0;
    Marker marker = Marker::None;
    Form form = Form::Exact;
    std::size_t position = 0;
    std::string fixedLine = {};
    bool counts = true;  ///< it is a marker, or taking it for one makes a whole region
};

bool IsBlockMarker(Marker marker) {
    return marker == Marker::BlockBegin || marker == Marker::BlockEnd || marker == Marker::FormerLine;
}

void AddGluedTokens(std::size_t line, std::string_view text, std::vector<Token>& tokens) {
    std::size_t position = 0;
    while (const auto glued = FindGluedMarker(text.substr(position))) {
        position += glued->position;
        tokens.push_back({line, glued->marker, Token::Form::Glued, position});
    }
}

std::vector<Token> FindTokens(const RepairText& repair) {
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < repair.Size(); ++i) {
        const std::string& text = repair.Text(i);
        const Marker marker = MarkerOf(text);
        if (marker != Marker::None) tokens.push_back({i, marker});
        if (auto near = FindNearMarker(text)) {
            tokens.push_back({i, near->marker, Token::Form::Near, 0, std::move(near->line)});
        } else {
            AddGluedTokens(i, text, tokens);
        }
    }
    return tokens;
}

/// Goes through the tokens in order and decides which of those that are no markers as they stand are meant to
/// be: those that complete a region, or end one that is not ended otherwise.
class TokenJudge {
  public:
    explicit TokenJudge(std::vector<Token>& tokens)
        : m_tokens(tokens), m_nextOfBlocks(tokens.size()), m_nextOfComments(tokens.size()) {
        Next ofBlocks;
        Next ofComments;
        for (std::size_t at = tokens.size(); at-- > 0;) {
            m_nextOfBlocks[at] = ofBlocks;
            m_nextOfComments[at] = ofComments;
            Next& next = IsBlockMarker(tokens[at].marker) ? ofBlocks : ofComments;
            (tokens[at].form == Token::Form::Glued ? next.glued : next.other) = at;
        }
    }

    void Judge() {
        for (std::size_t at = 0; at < m_tokens.size(); ++at) {
            Token& token = m_tokens[at];
            token.counts = token.form == Token::Form::Exact || Fits(at);
            if (token.counts) Follow(token.marker);
        }
    }

  private:
    /// The tokens that come next behind one; `kNone` where there is none.
    struct Next {
        std::size_t glued = kNone;
        std::size_t other = kNone;
    };

    bool Fits(std::size_t at) const {
        switch (m_tokens[at].marker) {
            case Marker::BlockBegin:
                return !m_isInBlock && NextMarker(at, true) == Marker::BlockEnd && CanBeginAt(at);
            case Marker::BlockEnd:
                return m_isInBlock && NextMarker(at, true) != Marker::BlockEnd;
            case Marker::FormerLine:
                return !m_isInBlock && HasBlockBehind(at);
            case Marker::Notice:
            case Marker::TemplateComment:
                return !m_isInComment && NextMarker(at, false) == Marker::CommentEnd;
            case Marker::CommentEnd:
                return m_isInComment && NextMarker(at, false) != Marker::CommentEnd;
            case Marker::None:
                break;
        }
        return false;
    }

    /// A block has a kept former line, another block or an empty line before it.
    bool CanBeginAt(std::size_t at) const {
        return m_tokens[at].form != Token::Form::Glued ||
               (at > 0 && m_tokens[at - 1].line == m_tokens[at].line);
    }

    bool HasBlockBehind(std::size_t at) const {
        const std::size_t next = at + 1;
        if (next >= m_tokens.size() || m_tokens[next].marker != Marker::BlockBegin) return false;
        if (m_tokens[next].line > m_tokens[at].line + 1) return false;
        return m_tokens[next].form == Token::Form::Exact || Fits(next);
    }

    /// The next marker of blocks, or of notices and template comments. Text that ends with a marker counts
    /// only close by: it may just mention it.
    Marker NextMarker(std::size_t at, bool ofBlocks) const {
        const Next& next = (ofBlocks ? m_nextOfBlocks : m_nextOfComments)[at];
        const bool isClose = next.glued != kNone && m_tokens[next.glued].line <= m_tokens[at].line + 1;
        const std::size_t first = isClose ? std::min(next.glued, next.other) : next.other;
        return first == kNone ? Marker::None : m_tokens[first].marker;
    }

    void Follow(Marker marker) {
        if (marker == Marker::BlockBegin || marker == Marker::BlockEnd) {
            m_isInBlock = marker == Marker::BlockBegin;
        } else if (marker != Marker::FormerLine && !m_isInBlock) {
            m_isInComment = marker != Marker::CommentEnd;
        }
    }

    std::vector<Token>& m_tokens;
    std::vector<Next> m_nextOfBlocks;
    std::vector<Next> m_nextOfComments;
    bool m_isInBlock = false;
    bool m_isInComment = false;
};

DamagedRegions RegionsOf(Marker marker) {
    return IsBlockMarker(marker) ? DamagedRegions::Blocks : DamagedRegions::Notices;
}

std::string Quoted(Marker marker) {
    std::string_view text = MarkerText(marker);
    if (text.ends_with(' ')) text.remove_suffix(1);
    return "\"" + std::string(text) + "\"";
}

bool IsWholeMarker(std::string_view text) {
    const Marker marker = MarkerOf(text);
    return marker != Marker::None && marker != Marker::FormerLine &&
           text.find_first_not_of(kBlanks, MarkerText(marker).size()) == std::string_view::npos;
}

/// Where only one text can have been before the marker. A blank before it is the joining editor's or the
/// line's own, which matters unless the line is a marker itself.
bool CanSplit(std::string_view text, std::size_t position) {
    return std::string_view(kBlanks).find(text[position - 1]) == std::string_view::npos ||
           IsWholeMarker(text.substr(0, position));
}

bool SplitJoinedLines(RepairText& repair) {
    std::vector<Token> tokens = FindTokens(repair);
    TokenJudge(tokens).Judge();
    bool wasSplit = false;
    std::size_t lastLine = repair.Size();
    for (const Token& token : tokens) {
        if (token.form != Token::Form::Glued || !token.counts || token.line == lastLine ||
            !CanSplit(repair.Text(token.line), token.position))
            continue;
        const std::string text = repair.Text(token.line);
        lastLine = token.line;
        repair.Concern(RegionsOf(token.marker));
        repair.Note(token.line, "joined-lines",
                    Quoted(token.marker) + " stands behind other text, where it is no marker",
                    "begin a line with it");
        const std::string before = text.substr(0, token.position);
        repair.Replace(token.line,
                       IsWholeMarker(before) ? std::string(MarkerText(MarkerOf(before))) : before);
        repair.InsertAfter(token.line, text.substr(token.position));
        wasSplit = true;
    }
    repair.Settle();
    return wasSplit;
}

void FixNear(RepairText& repair, const Token& token) {
    repair.Concern(RegionsOf(token.marker));
    const std::string what = "this is nearly " + Quoted(token.marker) + ", but no marker";
    if (token.counts) {
        repair.Note(token.line, "hand-edited-marker", what, "write the marker as it was");
        repair.Replace(token.line, token.fixedLine);
        return;
    }
    repair.NoteAmbiguous(token.line, "hand-edited-marker",
                         what + ", and no whole region comes from taking it for one",
                         {"write the marker as it was, with the other markers of its region",
                          "take the line out, if nothing belongs to it"});
}

std::string WhatStandsBehind(const std::string& rest) {
    if (rest == "\r") return "a carriage return stands behind ";
    const bool isBlank = rest.find_first_not_of(kBlanks) == std::string::npos;
    return isBlank ? "white space stands behind " : "a needless \"" + rest + "\" stands behind ";
}

void FixExact(RepairText& repair, const Token& token, bool hasGluedMarker) {
    if (token.marker == Marker::FormerLine) return;
    const std::string& text = repair.Text(token.line);
    const std::string rest = text.substr(MarkerText(token.marker).size());
    if (rest.empty()) return;
    const bool isBlank = rest.find_first_not_of(kBlanks) == std::string::npos;
    repair.Concern(isBlank ? DamagedRegions::None : RegionsOf(token.marker));
    if (IsOnlySurroundings(rest)) {
        repair.Note(token.line, "hand-edited-marker", WhatStandsBehind(rest) + Quoted(token.marker),
                    "take it out");
        repair.Replace(token.line, std::string(MarkerText(token.marker)));
    } else if (!hasGluedMarker) {
        repair.NoteAmbiguous(token.line, "text-after-marker",
                             "text stands behind " + Quoted(token.marker) +
                                 ": it has no effect, and goes when the marker goes",
                             {"give it a line of its own, outside of the region", "take it out"});
    }
}

void LeaveJoined(RepairText& repair, const Token& token) {
    repair.Concern(RegionsOf(token.marker));
    repair.NoteAmbiguous(token.line, "joined-lines",
                         Quoted(token.marker) + " stands behind other text and blanks, where it is no marker",
                         {"begin a line with it, and take the blanks before it out",
                          "begin a line with it, and keep the blanks in the line before"});
    repair.TakeAs(token.line, token.marker);
}

}  // namespace

void CheckHandEdits(RepairText& repair) {
    for (int joined = 0; joined < kMostJoinedLines && SplitJoinedLines(repair);)
        ++joined;
    std::vector<Token> tokens = FindTokens(repair);
    TokenJudge(tokens).Judge();
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        const bool isLeftJoined = token.form == Token::Form::Glued && token.counts;
        if (token.form == Token::Form::Near) FixNear(repair, token);
        if (token.form == Token::Form::Exact) {
            const bool hasGluedMarker =
                i + 1 < tokens.size() && tokens[i + 1].line == token.line && tokens[i + 1].counts;
            FixExact(repair, token, hasGluedMarker);
        }
        if (isLeftJoined) LeaveJoined(repair, token);
    }
    repair.Settle();
}

}  // namespace ZET
