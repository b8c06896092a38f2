#include "cli/Report.h"
#include "cli/Translation.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "cli/ExitStatus.h"
#include "deploy/host/Remedy.h"
#include "posix/Printable.h"
#include "text/Lines.h"

namespace ZET::Cli {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kDocumentVersion = 1;

bool WantsColor(const std::string& color, bool isTerminal) {
    if (color != "auto") return color == "always";
    const char* noColor = std::getenv("NO_COLOR");
    return isTerminal && (noColor == nullptr || *noColor == '\0');
}

/// As `Printable`, but keeps tabs, which a line of a file may contain.
std::string PrintableLine(std::string_view line) {
    std::string text;
    for (std::size_t tab; (tab = line.find('\t')) != std::string_view::npos; line.remove_prefix(tab + 1))
        text += Printable(line.substr(0, tab)) + "\t";
    return text + Printable(line);
}

/// Indents lines, so that none from elsewhere can be mistaken for the program's own.
std::string SetIn(std::string_view lines) {
    std::string text;
    while (!lines.empty())
        text += "  " + PrintableLine(Text::TakeLine(lines).text) + "\n";
    return text;
}

bool IsUtf8(const std::string& text) {
    try {
        (void)Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

/// Where an object is keyed by names of the host, a field may have the name of the flag.
bool Has(const Fields& fields, const std::string& name) {
    return std::any_of(fields.begin(), fields.end(), [&](const auto& field) { return field.first == name; });
}

Json ToJson(const Value& value);

Json ToJson(const Fields& fields) {
    Json object = Json::object();
    for (const auto& [name, value] : fields) {
        object[name] = ToJson(value);
        if (IsLossy(value) && !Has(fields, name + "_lossy")) object[name + "_lossy"] = true;
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

std::string WhyIncomplete(const OutputStream& output) {
    if (output.Error() == 0) return _("standard output cannot be written: the report is not complete");
    return Filled(_("standard output cannot be written: %s (the report is not complete)"),
                  {Deploy::ReasonOf(output.Error())});
}

std::string_view ColorOfDiffLine(std::string_view line) {
    if (line.starts_with("+++") || line.starts_with("---")) return "\033[1m";
    if (line.starts_with('+')) return "\033[32m";
    if (line.starts_with('-')) return "\033[31m";
    if (line.starts_with("@@")) return "\033[36m";
    return "";
}

}  // namespace

bool IsLossy(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value.value)) return !IsUtf8(*text);
    const auto* list = std::get_if<List>(&value.value);
    return list != nullptr && std::any_of(list->begin(), list->end(), IsLossy);
}

Report::Report(const GlobalOptions& asked)
    : m_program(asked.program),
      m_json(asked.json),
      m_quiet(asked.quiet),
      m_verbose(asked.verbose),
      m_output(STDOUT_FILENO),
      m_messages(STDERR_FILENO),
      m_progress(m_messages, !asked.json && !asked.quiet),
      m_color(WantsColor(asked.color, m_output.IsTerminal())) {
    Set("version", kDocumentVersion);
    Set("command", asked.command.empty() ? Value(nullptr) : Value(asked.command));
    AddList("warnings");
    AddList("errors");
    Set("failure", nullptr);
}

void Report::Line(const std::string& text) {
    Text(Printable(text) + "\n");
}

void Report::Lines(std::string_view text) {
    Text(SetIn(text));
}

void Report::Data(const std::string& line) {
    Text((m_output.IsTerminal() ? PrintableLine(line) : line) + "\n");
}

void Report::Text(std::string_view text) {
    if (m_json) return;
    m_progress.Erase();
    if (m_pager)
        m_paged += text;
    else
        m_output.Write(text);
}

void Report::Bytes(std::string_view text) {
    if (!m_output.IsTerminal()) return Text(text);
    std::string shown;
    while (!text.empty()) {
        const Text::TextLine line = Text::TakeLine(text);
        shown.append(PrintableLine(line.text)).append(line.hasLineFeed ? "\n" : "");
    }
    Text(shown);
}

void Report::UsePager() {
    if (m_json || !m_output.IsTerminal()) return;
    const Pager pager;
    if (pager.IsWanted()) m_pager = pager;
}

void Report::ShowPaged() {
    if (!m_pager || m_paged.empty()) return;
    const Pager pager = *m_pager;
    m_pager.reset();
    m_output.Flush();
    if (pager.Show(m_paged)) return;
    if (!pager.Trouble().empty()) Warning(pager.Trouble());
    m_output.Write(m_paged);
}

void Report::Diff(std::string_view diff) {
    if (!m_color && !m_output.IsTerminal()) return Text(diff);
    std::string shown;
    while (!diff.empty()) {
        const Text::TextLine line = Text::TakeLine(diff);
        const std::string_view color = m_color ? ColorOfDiffLine(line.text) : "";
        shown.append(color).append(m_output.IsTerminal() ? PrintableLine(line.text) : line.text);
        shown.append(color.empty() ? "" : "\033[0m").append(line.hasLineFeed ? "\n" : "");
    }
    Text(shown);
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
    if (!m_json) return;  // a long list would only take memory
    auto known = std::find_if(m_document.begin(), m_document.end(),
                              [&](const auto& field) { return field.first == list; });
    if (known == m_document.end()) known = m_document.emplace(m_document.end(), list, List());
    std::get<List>(known->second.value).push_back(std::move(value));
}

void Report::Message(const char* kind, const std::string& text, std::string_view lines) {
    m_output.Flush();
    m_progress.Erase();
    m_messages.Write(m_program + ": " + kind + Printable(text) + "\n" + SetIn(lines));
    m_messages.Flush();
}

void Report::Detail(const std::string& text) {
    if (m_verbose) Message("", text);
}

void Report::Remark(const std::string& text) {
    if (!m_quiet) Message("", text);
}

void Report::Warning(const std::string& text) {
    Add("warnings", text);
    if (!m_quiet) Message(_("warning: "), text);
}

void Report::Error(const std::string& text, const std::string& lines) {
    Add("errors", lines.empty() ? text : text + "\n" + lines);
    Message(_("error: "), text, lines);
}

int Report::Finish(int status) {
    m_progress.Erase();
    ShowPaged();
    if (m_json) {
        Set("exit_status", status);
        m_output.Write(ToJson(m_document).dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    }
    m_output.Flush();
    if (!m_output.HasFailed()) return status;
    Message(_("error: "), WhyIncomplete(m_output));
    return kFailed;
}

}  // namespace ZET::Cli
