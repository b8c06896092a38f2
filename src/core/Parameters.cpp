#include "Parameters.h"

#include <mutex>
#include <optional>
#include <set>
#include <string_view>

#include "Message.h"
#include "ParameterFile.h"
#include "ParameterKinds.h"
#include "ParameterTable.h"
#include "PathArgument.h"
#include "posix/Printable.h"
#include "zet/ZETHost.h"

namespace ZET::Core {

namespace {

/// A value with a placeholder is judged after the template has replaced it.
bool IsForTemplates(const ParameterEntry& entry, std::string_view value) {
    return entry.isForTemplates && value.find("${") != std::string_view::npos;
}

using MaybeProblem = std::optional<ZETParameterProblem>;

MaybeProblem ProblemOfKind(const ParameterEntry& entry, const std::string& value) {
    if (value.empty() ? entry.mayBeEmpty : IsForTemplates(entry, value)) return std::nullopt;
    const ZETParameter parameter = Described(entry);
    if (!value.empty() && IsOfKind(parameter, value)) return std::nullopt;
    const std::string kind = KindInWords(parameter);
    if (value.empty())
        return {
            {Message("%s is empty", entry.name), Message("give it %s, or remove its line", kind.c_str())}};
    return {{Message("'%s' is no value for %s, which has to be %s", Printable(value).c_str(), entry.name,
                     kind.c_str()),
             HowToWrite(parameter)}};
}

/// The core warns of a flag that it does not understand and uses the default. Refusing it would keep every
/// host from starting once it is in the file, and dropping it would lose what somebody wrote.
MaybeProblem ProblemOfFlag(std::string_view key, std::string_view value) {
    const ParameterEntry* entry = FindParameter(key);
    if (entry == nullptr || entry->kind != ZETParameterKind::YesNo || ReadFlag(value)) return std::nullopt;
    return {{Message("'%s' is no value for %s and counts as %s", Printable(value).c_str(), entry->name,
                     entry->value),
             HowToWrite(Described(*entry))}};
}

/// May be called by hosts in several threads.
void WarnOnce(const std::string& key) {
    static std::mutex& mutex = *new std::mutex;
    static std::set<std::string>& warned = *new std::set<std::string>;
    const auto isNew = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return warned.insert(key).second;
    };
    if (isNew()) Warn("Parameter '%s' is unknown.", Printable(key).c_str());
}

bool CanStandInALine(std::string_view value) {
    return value.find_first_of(std::string_view("\n\0", 2)) == std::string_view::npos;
}

}  // namespace

Parameters::Parameters() : m_values{{kConfigFile, ""}} {}

Parameters::Parameters(const std::string& file) {
    RequirePath(file, "CZETHost");
    ReadParameterFile(file, [&](const ParameterLine& line) {
        if (const MaybeProblem problem = ProblemOfFlag(line.name, line.value))
            Warn("%s:%zu: %s (%s)", file.c_str(), line.number, problem->text.c_str(),
                 problem->remedy.c_str());
        if (line.name == kConfigFile)
            Warn("%s:%zu: %s has no effect here, it is always the file that is read (remove the line)",
                 file.c_str(), line.number, kConfigFile);
        m_values.insert_or_assign(std::string(line.name), line.value);
    });
    m_values.insert_or_assign(kConfigFile, file);
}

const std::string* Parameters::Find(const std::string& key) const {
    const auto found = m_values.find(key);
    return found != m_values.end() ? &found->second : nullptr;
}

const std::string& Parameters::Domain() const {
    static const std::string& none = *new std::string;
    const std::string* value = Find(kDomain);
    return value != nullptr ? *value : none;
}

const std::string& Parameters::Server() const {
    static const std::string& none = *new std::string;
    const std::string* value = Find(kServer);
    return value != nullptr ? *value : none;
}

bool Parameters::Flag(const std::string& key) const {
    const std::string* value = Find(key);
    return *FlagOfParam(key, value != nullptr ? *value : "");
}

bool Parameters::ServiceDiscovery() const {
    return Flag(kServiceDiscovery);
}

bool Parameters::Sync() const {
    return Flag(kSync);
}

std::string Parameters::Get(const std::string& key) const {
    if (const std::string* value = Find(key)) return *value;
    if (const ParameterEntry* entry = FindParameter(key)) return DefaultValue(*entry, Domain());
    WarnOnce(key);
    return {};
}

void Parameters::Update(const std::string& key, const std::string& value) {
    RequireNotEmpty(key, "UpdateParam");
    if (!IsParameterName(key)) FailCheck("'%s' is no name of a parameter.", Printable(key).c_str());
    if (!CanStandInALine(value))
        FailCheck("The value of parameter '%s' holds a line feed or a NUL byte.", key.c_str());
    if (key == kConfigFile && value != *Find(kConfigFile))
        FailCheck("Parameter '%s' cannot be changed.", kConfigFile);
    if (const MaybeProblem problem = ProblemOfFlag(key, value))
        Warn("%s (%s)", problem->text.c_str(), problem->remedy.c_str());
    m_values.insert_or_assign(key, value);
}

StringMap Parameters::All() const {
    StringMap all = m_values;
    for (const ParameterEntry& each : ParameterTable())
        all.try_emplace(each.name, DefaultValue(each, Domain()));
    return all;
}

StringMap Parameters::OfTheProduct() const {
    StringMap own;
    for (const ParameterEntry& each : ParameterTable())
        own.emplace(each.name, Get(each.name));
    return own;
}

}  // namespace ZET::Core

namespace ZET {

std::optional<ZETParameterProblem> ProblemOfParam(const std::string& key, const std::string& value) {
    if (!Core::IsParameterName(key))
        return {{Core::Message("'%s' is no name of a parameter", Printable(key).c_str()),
                 Core::Message("use letters, digits and \"_\", no digit first")}};
    if (!Core::CanStandInALine(value))
        return {{Core::Message("the value of %s holds a line feed or a NUL byte", key.c_str()),
                 Core::Message("give it without")}};
    if (const auto problem = Core::ProblemOfFlag(key, value)) return problem;
    const Core::ParameterEntry* entry = Core::FindParameter(key);
    return entry != nullptr ? Core::ProblemOfKind(*entry, value) : std::nullopt;
}

std::optional<bool> FlagOfParam(const std::string& key, const std::string& value) {
    const Core::ParameterEntry* entry = Core::FindParameter(key);
    if (entry == nullptr || entry->kind != ZETParameterKind::YesNo) return std::nullopt;
    const std::optional<bool> flag = Core::ReadFlag(value);
    return flag ? flag : Core::ReadFlag(entry->value);
}

}  // namespace ZET
