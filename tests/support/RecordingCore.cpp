#include "RecordingCore.h"

#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "RecordingCoreMatch.h"
#include "zet/ZETErrors.h"

namespace ZET {

namespace {
RecordingCore* theCurrentCore = nullptr;

std::string CallOf(const std::string& entry) {
    return entry.substr(0, entry.find(' '));
}
}  // namespace

RecordingCore::RecordingCore() {
    theCurrentCore = this;
}

RecordingCore::~RecordingCore() {
    theCurrentCore = nullptr;
}

RecordingCore* RecordingCore::Current() {
    return theCurrentCore;
}

const std::string& RecordingCore::GetDomainName() {
    Note("GetDomainName", "");
    return m_domainName;
}

const std::string& RecordingCore::GetServerName() {
    Note("GetServerName", "");
    return m_serverName;
}

bool RecordingCore::IsServiceDiscovery() {
    Note("IsServiceDiscovery", "");
    return m_serviceDiscovery;
}

bool RecordingCore::RegisterInterface(std::shared_ptr<CZETInterface> interface) {
    m_lastOffered = interface;
    m_ownersWhenOffered = interface.use_count();
    Note("RegisterInterface", interface ? interface->GetName() : "(null)");
    if (m_refusesInterfaces) return false;
    m_interfaces.push_back(std::move(interface));
    return true;
}

bool RecordingCore::RemoveInterface(const std::string& name) {
    Note("RemoveInterface", name);
    return std::erase_if(m_interfaces, [&](const auto& each) { return each->GetName() == name; }) > 0;
}

std::string RecordingCore::GetParam(const std::string& key) {
    Note("GetParam", key);
    const auto found = m_params.find(key);
    return found == m_params.end() ? "" : found->second;
}

void RecordingCore::UpdateParam(const std::string& key, const std::string& value) {
    Note("UpdateParam", key + "=" + value);
    m_params[key] = value;
}

bool RecordingCore::MatchRegEx(const std::string& pattern, const std::string& subject, void* reserved,
                               std::size_t flags) {
    const std::string extra = reserved == nullptr && flags == 0 ? "" : " (not null and 0)";
    Note("MatchRegEx", pattern + " in " + subject + extra);
    return m_matcher ? m_matcher(pattern, subject) : IsFound(pattern, subject);
}

void RecordingCore::WriteStatus(std::ostream& stream) {
    Note("WriteStatus", "");
    if (m_statusWriter) m_statusWriter(stream);
}

void RecordingCore::SetTranslation(const std::string& text, const std::string& translation) {
    m_translations[text] = translation;
}

void RecordingCore::SetMatcher(std::function<bool(const std::string&, const std::string&)> matcher) {
    m_matcher = std::move(matcher);
}

void RecordingCore::FailAt(const std::string& call, std::size_t nth) {
    m_failures[call] = nth;
}

void RecordingCore::Note(const std::string& call, const std::string& arguments) {
    const std::string entry = arguments.empty() ? call : call + " " + arguments;
    m_journal.push_back(entry);
    for (const std::string& name : std::set<std::string>{call, entry}) {
        const auto planned = m_failures.find(name);
        if (planned == m_failures.end() || --planned->second > 0) continue;
        m_failures.erase(planned);
        throw ScriptedFailure{entry};
    }
}

const char* RecordingCore::Translate(const char* domain, const char* text) {
    Note("Translate", std::string(domain) + ": " + text);
    ++m_translated;
    const auto known = m_translations.find(text);
    const char* translated = known == m_translations.end() ? text : known->second.c_str();
    m_domains[translated] = domain;
    return translated;
}

char* RecordingCore::Format(RecordedMessage message, const char* format, std::va_list arguments) {
    message.domain = m_domains[format];
    message.format = format;
    char* text = nullptr;
    if (!m_refusesToFormat && vasprintf(&text, format, arguments) < 0) text = nullptr;
    message.result = text == nullptr ? "" : text;
    m_messages.push_back(message);
    try {
        Note("Format", message.function + ": " + message.result);
    } catch (...) {
        free(text);
        throw;
    }
    return text;
}

std::vector<std::string> RecordingCore::Journal(const std::set<std::string>& calls) const {
    std::vector<std::string> chosen;
    for (const std::string& entry : m_journal)
        if (calls.contains(CallOf(entry))) chosen.push_back(entry);
    return chosen;
}

std::vector<std::string> RecordingCore::Log() const {
    std::vector<std::string> records;
    for (const std::string& entry : Journal({"Put"}))
        records.push_back(entry.substr(4));
    return records;
}

void RecordingCore::Forget() {
    m_journal.clear();
    m_messages.clear();
}

}  // namespace ZET
