#include "deploy/history/FastImport.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ostream>
#include <utility>

namespace ZET::Deploy {

namespace {

constexpr char kRepository[] = ".git";

bool IsPlain(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 &&
           (std::isalnum(byte) != 0 || std::string_view("/._-+@,:=").find(c) != std::string_view::npos);
}

/// Renames steps that are called like a repository's own directory: the reader refuses a path with such a
/// step.
std::string WithoutRepositories(const std::string& path) {
    std::string result;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string step = path.substr(start, end - start);
        result += (start == 0 ? "" : "/") + (strcasecmp(step.c_str(), kRepository) == 0 ? "_" + step : step);
        start = end + 1;
    }
    return result;
}

/// Replaces what would end the name or the line.
std::string Harmless(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '<' || c == '>' || c == '\n' || c == '\0'; }, ' ');
    return text;
}

std::string TextOf(const FastImport::Signature& signature) {
    return Harmless(signature.name) + " <" + Harmless(signature.address) + "> " +
           std::to_string(signature.seconds) + " +0000";
}

}  // namespace

std::string PathInStream(const std::string& path) {
    const std::string name = WithoutRepositories(path);
    if (std::all_of(name.begin(), name.end(), IsPlain)) return name;
    std::string quoted = "\"";
    for (const char c : name) {
        char octal[5] = {c, '\0'};
        if (!IsPlain(c)) std::snprintf(octal, sizeof octal, "\\%03o", static_cast<unsigned char>(c));
        quoted += octal;
    }
    return quoted + "\"";
}

FastImport::FastImport(std::ostream& stream, std::string branch)
    : m_stream(stream), m_branch(std::move(branch)) {
    m_stream << "feature done\nreset " << m_branch << "\n\n";
}

void FastImport::Data(std::string_view bytes) {
    m_stream << "data " << bytes.size() << '\n' << bytes << '\n';
}

void FastImport::Change(const Signature& author, const Signature& committer, const std::string& message) {
    m_stream << "commit " << m_branch << "\nauthor " << TextOf(author) << "\ncommitter " << TextOf(committer)
             << '\n';
    Data(message);
}

void FastImport::Write(const std::string& path, bool isExecutable, std::string_view text) {
    m_stream << "M " << (isExecutable ? "100755" : "100644") << " inline " << PathInStream(path) << '\n';
    Data(text);
}

void FastImport::Remove(const std::string& path) {
    m_stream << "D " << PathInStream(path) << '\n';
}

void FastImport::End() {
    m_stream << "done\n";
}

}  // namespace ZET::Deploy
