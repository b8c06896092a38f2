#include "TextReader.h"

#include <algorithm>
#include <utility>

namespace ZET {

void TextReader::Rewind() {
    m_position = m_lineStart = m_countedTo = m_lineFeeds = 0;
    m_endedByEnd = false;
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

std::string_view TextReader::SkipLinesWithout(std::string_view bytes) {
    const std::string_view rest = Rest();
    if (rest.starts_with(bytes)) return {};
    const std::string_view before = rest.substr(0, rest.find(bytes));
    const std::string_view lines = before.substr(0, before.rfind('\n') + 1);
    m_position += lines.size();
    return lines;
}

std::size_t TextReader::LineNumber() {
    const std::string_view uncounted = m_bytes.View().substr(m_countedTo, m_lineStart - m_countedTo);
    m_lineFeeds += static_cast<std::size_t>(std::count(uncounted.begin(), uncounted.end(), '\n'));
    m_countedTo = m_lineStart;
    return m_lineFeeds + 1;
}

TextBuilder::TextBuilder(TextReader& source, Buffer memory)
    : m_source(source), m_mayRevive(!source.IsExhausted()), m_bytes(std::move(memory)) {
    m_bytes.Clear();
}

TextBuilder::~TextBuilder() {
    if (m_mayRevive) m_source.Renew();
}

void TextBuilder::Append(std::string_view bytes) {
    FlushRun();
    m_bytes.Append(bytes);
}

void TextBuilder::AppendLine(std::string_view line) {
    Append(line);
    m_bytes.Append("\n");
}

void TextBuilder::EndLine(bool isEmpty) {
    if (!m_source.EndedByEndOfText() || isEmpty) Append("\n");
}

Buffer TextBuilder::Install() {
    // A run of the same length may be a piece of something else.
    const std::string_view source = m_source.Bytes();
    const bool isWhole =
        m_bytes.Size() == 0 && m_run.size() == source.size() && m_run.data() == source.data();
    if (!isWhole) FlushRun();
    m_mayRevive = false;
    if (!isWhole) return m_source.Replace(std::move(m_bytes));
    m_source.Renew();
    return std::move(m_bytes);
}

void TextBuilder::FlushRun() {
    if (m_run.empty()) return;
    // Most passes change little: room for the whole source at once saves growing step by step.
    m_bytes.Reserve(m_source.Bytes().size() + m_source.Bytes().size() / 8);
    m_bytes.Append(m_run);
    m_run = {};
}

}  // namespace ZET
