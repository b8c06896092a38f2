#include "Report.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "ExitStatus.h"

namespace ZET {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kDocumentVersion = 1;

bool WantsColor(const std::string& color) {
    if (color != "auto") return color == "always";
    const char* noColor = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && (noColor == nullptr || *noColor == '\0');
}

bool IsUtf8(const std::string& text) {
    try {
        (void)Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

/// Whether a text, or one of a list of texts, cannot be given as it is.
bool IsLossy(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value.value)) return !IsUtf8(*text);
    const auto* list = std::get_if<List>(&value.value);
    return list != nullptr && std::any_of(list->begin(), list->end(), IsLossy);
}

Json ToJson(const Value& value);

Json ToJson(const Fields& fields) {
    Json object = Json::object();
    for (const auto& [name, value] : fields) {
        object[name] = ToJson(value);
        if (IsLossy(value)) object[name + "_lossy"] = true;
    }
    return object;
}

Json ToJson(const List& list) {
    Json array = Json::array();
    for (const Value& value : list)
        array.push_back(ToJson(value));
    return array;
}

Json ToJson(const Value& value) {
    return std::visit(
        [](const auto& content) -> Json {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, List> || std::is_same_v<Content, Fields>) {
                return ToJson(content);
            } else {
                return content;
            }
        },
        value.value);
}

std::string_view ColorOfDiffLine(std::string_view line) {
    if (line.starts_with("+++") || line.starts_with("---")) return "\033[1m";
    if (line.starts_with('+')) return "\033[32m";
    if (line.starts_with('-')) return "\033[31m";
    if (line.starts_with("@@")) return "\033[36m";
    return "";
}

}  // namespace

Report::Report(const Request& request)
    : m_program(request.program),
      m_json(request.json),
      m_quiet(request.quiet),
      m_verbose(request.verbose),
      m_color(WantsColor(request.color)) {
    Set("version", kDocumentVersion);
    Set("command", request.command.empty() ? Value(nullptr) : Value(request.command));
}

void Report::Line(const std::string& text) {
    Text(text + "\n");
}

void Report::Text(std::string_view text) {
    if (!m_json) Write(text);
}

void Report::Write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) NoteFailure();
}

/// A reader that goes away has seen what it wanted to see.
void Report::NoteFailure() {
    m_outputFailed = m_outputFailed || errno != EPIPE;
}

void Report::Diff(std::string_view diff) {
    if (!m_color) return Text(diff);
    while (!diff.empty()) {
        const std::size_t length = std::min(diff.find('\n'), diff.size() - 1) + 1;
        const std::string_view line = diff.substr(0, length);
        const std::string_view color = ColorOfDiffLine(line);
        const std::size_t lineFeed = line.ends_with('\n') ? 1 : 0;
        Text(color);
        Text(line.substr(0, length - lineFeed));
        if (!color.empty()) Text("\033[0m");
        Text(line.substr(length - lineFeed));
        diff.remove_prefix(length);
    }
}

void Report::Set(const std::string& name, Value value) {
    const auto known = std::find_if(m_document.begin(), m_document.end(),
                                    [&](const auto& field) { return field.first == name; });
    if (known != m_document.end()) {
        known->second = std::move(value);
    } else {
        m_document.emplace_back(name, std::move(value));
    }
}

void Report::AddList(const std::string& name) {
    Set(name, List());
}

void Report::Add(const std::string& list, Value value) {
    auto known = std::find_if(m_document.begin(), m_document.end(),
                              [&](const auto& field) { return field.first == list; });
    if (known == m_document.end()) known = m_document.emplace(m_document.end(), list, List());
    std::get<List>(known->second.value).push_back(std::move(value));
}

void Report::Message(const char* kind, const std::string& text) {
    if (std::fflush(stdout) != 0) NoteFailure();
    std::fprintf(stderr, "%s: %s%s\n", m_program.c_str(), kind, text.c_str());
}

void Report::Detail(const std::string& text) {
    if (m_verbose) Message("", text);
}

void Report::Remark(const std::string& text) {
    if (!m_quiet) Message("", text);
}

void Report::Warning(const std::string& text) {
    Add("warnings", text);
    if (!m_quiet) Message("warning: ", text);
}

void Report::Error(const std::string& text) {
    Add("errors", text);
    Message("error: ", text);
}

int Report::Finish(int status) {
    if (m_json) {
        Set("exit_status", status);
        const std::string text =
            ToJson(m_document).dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
        Write(text);
    }
    if (std::fflush(stdout) != 0) NoteFailure();
    if (!m_outputFailed) return status;
    std::fprintf(stderr, "%s: error: standard output cannot be written: the report is not complete\n",
                 m_program.c_str());
    return kFailed;
}

}  // namespace ZET
