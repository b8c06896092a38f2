#include <algorithm>
#include <array>
#include <vector>

#include "Messages.h"
#include "Passes.h"
#include "posix/ByteBlock.h"
#include "posix/ShortText.h"

namespace ZET {

namespace {

/// Expands the placeholders of lines. Most values contain no placeholder; these are inserted in one search
/// through all lines. For a line with another value, the text still to be searched is a stack of pieces, the
/// next one on top: the value is pushed on top of the rest of the line. So it is searched in turn and no byte
/// is moved twice, however many placeholders a line has.
class Expander {
  public:
    Expander(TextBuilder& out, const StringMap& values) : m_out(out), m_values(values) {}

    void Expand(std::string_view lines);

  private:
    /// A value found in the map.
    struct KnownValue {
        const StringMap::value_type* value = nullptr;
        bool isPlain = false;        ///< it contains no placeholder
        bool canBeginOther = false;  ///< a plain value that may form one together with the text after it
    };

    static bool LeadsToNone(const KnownValue& value, std::string_view behind);
    void ExpandRest(std::string_view line);
    bool CopyToPlaceholder();
    void ReplacePlaceholder();
    std::size_t FindPlaceholder() const;
    std::string_view ReadPlaceholder();
    const KnownValue* FindValue(std::string_view placeholder);
    // Kept out of `FindValue`, which then saves fewer registers: a twentieth of the pass's time.
    [[gnu::noinline]] bool Look(std::string_view placeholder, KnownValue& known);
    void Take(std::size_t count);
    void Drop(std::size_t count);
    void MarkUnknown(std::string_view placeholder);

    TextBuilder& m_out;
    const StringMap& m_values;
    std::vector<std::string_view> m_pieces;  ///< none of them is empty
    bool m_lineIsLeft = false;               ///< whether the lowest piece is the rest of the line itself
    std::string m_gathered;                  ///< a placeholder that spans several pieces
    std::string m_key;                       ///< reused, so that a lookup costs no allocation

    /// The values found last, by hash: a template uses few values, again and again.
    std::array<KnownValue, 64> m_recent = {};
};

/// For a placeholder without an end: callers must expect that the operation then never returns. The volatile
/// read keeps the compiler from assuming that every loop ends.
[[noreturn]] void SearchForever() {
    volatile bool again = true;
    while (again)
        again = true;
    __builtin_unreachable();
}

void Expander::Expand(std::string_view lines) {
    BytePlaces dollars('$');
    std::size_t done = 0;
    std::size_t lineEnd = 0;
    bool isComment = false;
    for (std::size_t dollar; (dollar = dollars.Next(lines)) != std::string_view::npos;) {
        if (dollar < done || !lines.substr(dollar + 1).starts_with('{')) continue;
        if (dollar >= lineEnd) {
            isComment = lines[lineEnd + SizeOfWholeLines(lines.substr(lineEnd, dollar - lineEnd))] == '#';
            lineEnd = dollar + std::min(FindNear(lines.substr(dollar), '\n'), lines.size() - dollar);
        }
        if (isComment) continue;
        const std::size_t size = FindNear(lines.substr(dollar), '}') + 1;
        const KnownValue* const value = size == 0 ? nullptr : FindValue(lines.substr(dollar, size));
        m_out.Copy(lines.substr(done, dollar - done));
        if (value != nullptr && LeadsToNone(*value, lines.substr(dollar + size))) {
            m_out.Append(value->value->second);
            done = dollar + size;
        } else {
            const std::string_view line = lines.substr(dollar, FindNear(lines.substr(dollar), '\n'));
            ExpandRest(line);
            done = dollar + line.size();
        }
    }
    m_out.Copy(lines.substr(done));
}

/// Whether the value cannot produce another placeholder. `behind` is the text after the placeholder, to the
/// end of the lines.
bool Expander::LeadsToNone(const KnownValue& value, std::string_view behind) {
    return value.isPlain && !(value.canBeginOther && behind.starts_with('{'));
}

/// Expands a line that begins with a placeholder.
void Expander::ExpandRest(std::string_view line) {
    m_pieces.assign(1, line);
    m_lineIsLeft = true;
    while (CopyToPlaceholder())
        ReplacePlaceholder();
}

/// Copies the text before the next placeholder; false if the line ends first.
bool Expander::CopyToPlaceholder() {
    while (!m_pieces.empty()) {
        const std::size_t position = FindPlaceholder();
        if (position != std::string_view::npos) {
            Take(position);
            return true;
        }
        Take(m_pieces.back().size());
    }
    return false;
}

/// The position of a placeholder in the top piece; its second character may be the first one of the next
/// piece.
std::size_t Expander::FindPlaceholder() const {
    const std::string_view piece = m_pieces.back();
    for (std::size_t at = piece.find('$'); at != std::string_view::npos; at = piece.find('$', at + 1)) {
        const bool isLast = at + 1 == piece.size();
        if (isLast && m_pieces.size() < 2) break;
        if ((isLast ? m_pieces[m_pieces.size() - 2].front() : piece[at + 1]) == '{') return at;
    }
    return std::string_view::npos;
}

void Expander::ReplacePlaceholder() {
    const std::string_view placeholder = ReadPlaceholder();
    if (placeholder.empty()) SearchForever();
    const KnownValue* const value = FindValue(placeholder);
    if (value == nullptr) return MarkUnknown(placeholder);
    Drop(placeholder.size());
    const std::string& text = value->value->second;
    if (text.empty() || (value->isPlain && !value->canBeginOther)) {
        m_out.Append(text);
    } else {
        m_pieces.push_back(text);
    }
}

/// The text from the top of the stack through the first "}"; empty if there is none.
std::string_view Expander::ReadPlaceholder() {
    const std::string_view top = m_pieces.back();
    const std::size_t end = top.find('}');
    if (end != std::string_view::npos) return top.substr(0, end + 1);
    m_gathered.clear();
    for (auto piece = m_pieces.rbegin(); piece != m_pieces.rend(); ++piece) {
        const std::size_t length = piece->find('}');
        m_gathered.append(piece->substr(0, length == std::string_view::npos ? length : length + 1));
        if (length != std::string_view::npos) return m_gathered;
    }
    return {};
}

const Expander::KnownValue* Expander::FindValue(std::string_view placeholder) {
    // A cheap hash that differs for most names: the size, and the bytes at both ends of the name.
    const auto byte = [&](std::size_t index) -> std::size_t {
        return static_cast<unsigned char>(placeholder[index]);
    };
    const std::size_t hash = placeholder.size() + 7 * byte(2) + 13 * byte(placeholder.size() - 2);
    KnownValue& recent = m_recent[hash % m_recent.size()];
    if (recent.value != nullptr && IsSame(recent.value->first, placeholder)) return &recent;
    return Look(placeholder, recent) ? &recent : nullptr;
}

/// Looks the value up in the map; false if there is none.
bool Expander::Look(std::string_view placeholder, KnownValue& known) {
    m_key.assign(placeholder);
    const auto found = m_values.find(m_key);
    if (found == m_values.end()) return false;
    // A key with a line feed cannot be inserted plainly, since a placeholder must end in its line.
    const bool isPlain =
        found->second.find("${") == std::string::npos && found->first.find('\n') == std::string::npos;
    known = {&*found, isPlain, found->second.ends_with('$')};
    return true;
}

/// The "!" makes the placeholder visible in the file and keeps it from being found again.
void Expander::MarkUnknown(std::string_view placeholder) {
    const std::string name(placeholder);
    Message message(kFileSource, "ApplyTemplates", Here());
    Log(ZETLogWarning,
        message.Format()(1, message.Translated(kModuleDomain, "Template parameter '%s' not found."),
                         name.c_str()));
    m_out.Append("!");
    Drop(1);
}

/// Moves bytes from the top piece to the output.
void Expander::Take(std::size_t count) {
    const std::string_view bytes = m_pieces.back().substr(0, count);
    if (m_lineIsLeft && m_pieces.size() == 1) {
        m_out.Copy(bytes);
    } else {
        m_out.Append(bytes);
    }
    Drop(count);
}

void Expander::Drop(std::size_t count) {
    while (count > 0) {
        std::string_view& piece = m_pieces.back();
        const std::size_t dropped = std::min(count, piece.size());
        piece.remove_prefix(dropped);
        count -= dropped;
        if (piece.empty()) m_pieces.pop_back();
    }
    m_lineIsLeft = m_lineIsLeft && !m_pieces.empty();
}

}  // namespace

void ApplyTemplatesPass(TextReader& in, TextBuilder& out, const StringMap& values) {
    Expander expander(out, values);
    const std::string_view text = in.Rest();
    const std::size_t wholeLines = SizeOfWholeLines(text);
    expander.Expand(text.substr(0, wholeLines));
    const std::string_view lastLine = text.substr(wholeLines);
    if (lastLine.empty()) return;
    const std::size_t lineStart = out.Size();
    expander.Expand(lastLine);
    // As for any line, one that became empty gets a line feed.
    if (out.Size() == lineStart) out.Append("\n");
}

}  // namespace ZET
