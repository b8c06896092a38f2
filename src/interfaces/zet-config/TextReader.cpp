#include "TextReader.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "posix/ByteBlock.h"

namespace ZET {

namespace {

/// Up to `kFewPieces` pieces are collected whatever their size; more only if their average size is at least
/// `kLongPiece`, so that their list takes at most an eighth of the text.
constexpr std::size_t kFewPieces = 64;
constexpr std::size_t kLongPiece = 128;

/// Texts up to this size are copied at once: for 1,000 files of 3 KB, collecting pieces took a fifth of the
/// module's instructions.
constexpr std::size_t kSmall = std::size_t{16} << 10;

constexpr std::size_t kManyOthers = std::size_t{64} << 10;  ///< collected bytes are copied twice

}  // namespace

void TextReader::Rewind() {
    m_position = m_countedTo = m_lineFeeds = 0;
}

void TextReader::Renew() {
    Rewind();
    m_exhausted = false;
}

Buffer TextReader::Replace(Buffer bytes) {
    std::swap(m_bytes, bytes);
    Renew();
    return bytes;
}

void TextReader::Arrange(const std::vector<TextPiece>& pieces, std::string_view others, std::size_t size) {
    m_bytes.Arrange(pieces, others, size);
    Renew();
}

std::string_view TextReader::SkipLinesWithout(std::string_view bytes) {
    const std::string_view rest = Rest();
    if (rest.starts_with(bytes)) return {};
    const std::string_view before = rest.substr(0, rest.find(bytes));
    // Usually `bytes` are found at the beginning of a line.
    const std::string_view lines =
        before.ends_with('\n') ? before : before.substr(0, SizeOfWholeLines(before));
    m_position += lines.size();
    return lines;
}

std::size_t TextReader::LineNumber() {
    const std::size_t beforeLastByte = m_position == 0 ? 0 : m_position - 1;
    const std::size_t lineStart = SizeOfWholeLines(m_bytes.View().substr(0, beforeLastByte));
    const std::string_view uncounted = m_bytes.View().substr(m_countedTo, lineStart - m_countedTo);
    m_lineFeeds += static_cast<std::size_t>(std::count(uncounted.begin(), uncounted.end(), '\n'));
    m_countedTo = lineStart;
    return m_lineFeeds + 1;
}

TextBuilder::TextBuilder(TextReader& source, Buffer memory)
    : m_source(source), m_mayRevive(!source.IsExhausted()), m_bytes(std::move(memory)) {
    m_bytes.Clear();
    if (source.Bytes().size() <= kSmall) CopyCollected();
}

TextBuilder::~TextBuilder() {
    if (m_mayRevive) m_source.Renew();
}

void TextBuilder::AddOthers(std::string_view bytes) {
    m_others += bytes;
    Add({TextPiece::kOthers, bytes.size()});
}

void TextBuilder::AppendLine(std::string_view line) {
    Append(line);
    Append("\n");
}

void TextBuilder::EndLine(bool isEmpty) {
    if (!m_source.EndedByEndOfText() || isEmpty) Append("\n");
}

Buffer TextBuilder::Install() {
    FlushRun();
    if (!m_isCopied) m_source.Arrange(m_pieces, m_others, m_size);
    m_mayRevive = false;
    return m_isCopied ? m_source.Replace(std::move(m_bytes)) : std::move(m_bytes);
}

void TextBuilder::AddRun(std::string_view run) {
    const std::string_view left = m_source.Bytes().substr(m_taken);
    const std::less_equal<> isNotBehind;
    if (!isNotBehind(left.data(), run.data()) ||
        !isNotBehind(run.data() + run.size(), left.data() + left.size()))
        return AddOthers(run);
    const auto at = static_cast<std::size_t>(run.data() - m_source.Bytes().data());
    m_taken = at + run.size();
    Add({at, run.size()});
}

void TextBuilder::Add(TextPiece piece) {
    m_pieces.push_back(piece);
    if (!IsWorthCollecting()) CopyCollected();
}

bool TextBuilder::IsWorthCollecting() const {
    return m_others.size() <= kManyOthers &&
           (m_pieces.size() <= kFewPieces || m_size / kLongPiece >= m_pieces.size());
}

void TextBuilder::CopyCollected() {
    // Most passes change little: reserving room for the whole source avoids growing step by step.
    m_bytes.Reserve(m_source.Bytes().size() + m_source.Bytes().size() / 8);
    std::string_view others = m_others;
    for (const TextPiece& piece : m_pieces) {
        if (piece.IsOfText()) {
            m_bytes.Append(m_source.Bytes().substr(piece.at, piece.size));
        } else {
            m_bytes.Append(others.substr(0, piece.size));
            others.remove_prefix(piece.size);
        }
    }
    m_isCopied = true;
    m_pieces.clear();
    m_others.clear();
}

}  // namespace ZET
