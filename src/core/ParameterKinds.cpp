#include "ParameterKinds.h"

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include "Characters.h"
#include "Message.h"
#include "ParameterTable.h"
#include "RegEx.h"
#include "posix/Printable.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

namespace ZET::Core {

namespace {

constexpr std::size_t kLongestLabel = 63;
constexpr std::size_t kLongestDomain = 253;

/// Cuts the part before the next `separator`, and the separator itself, off `rest`.
std::string_view TakePart(std::string_view& rest, char separator) {
    const std::size_t end = rest.find(separator);
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return part;
}

/// Strictly, a host name may not contain "_", but many networks use it.
bool IsLabel(std::string_view label) {
    if (label.empty() || label.size() > kLongestLabel || label.front() == '-' || label.back() == '-')
        return false;
    for (const char c : label)
        if (!IsLetter(c) && !IsDigit(c) && c != '-' && c != '_') return false;
    return true;
}

bool IsHostName(std::string_view name) {
    if (name.empty() || name.size() > kLongestDomain || name.back() == '.') return false;
    while (!name.empty())
        if (!IsLabel(TakePart(name, '.'))) return false;
    return true;
}

bool IsDomainName(std::string_view name) {
    if (name.starts_with('.')) name.remove_prefix(1);
    return IsHostName(name);
}

/// The characters that Kerberos files can hold unquoted and that do not delimit another part of a principal.
bool IsRealm(std::string_view name) {
    for (const char c : name)
        if (c <= ' ' || c > '~' || std::string_view("\"#;@\\{}[]").find(c) != std::string_view::npos)
            return false;
    return !name.empty();
}

/// The end of the attribute that begins `text`; a comma after a backslash does not end it.
std::size_t EndOfAttribute(std::string_view text) {
    std::size_t end = 0;
    while (end < text.size() && text[end] != ',')
        end += text[end] == '\\' ? 2 : 1;
    return end;
}

/// "name=value".
bool IsAttribute(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0) return false;
    const std::string_view name = text.substr(0, equals);
    if (!IsLetter(name.front()) && !IsDigit(name.front())) return false;
    for (const char c : name)
        if (!IsLetter(c) && !IsDigit(c) && c != '-' && c != '.') return false;
    return text.find_first_not_of(' ', equals + 1) != std::string_view::npos;
}

/// Attributes separated by commas, with or without blanks after them.
bool IsLdapName(std::string_view name) {
    if (Printable(name) != name) return false;
    for (;;) {
        const std::size_t end = EndOfAttribute(name);
        if (end > name.size() || !IsAttribute(name.substr(0, end))) return false;
        if (end == name.size()) return true;
        name.remove_prefix(end + 1);
        name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
    }
}

/// A number that fits into 32 bits, in decimal digits.
std::optional<std::uint64_t> TakeNumber(std::string_view& rest) {
    std::uint64_t number = 0;
    std::size_t digits = 0;
    while (digits < rest.size() && IsDigit(rest[digits])) {
        number = number * 10 + static_cast<std::uint64_t>(rest[digits++] - '0');
        if (number > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    }
    if (digits == 0) return std::nullopt;
    rest.remove_prefix(digits);
    return number;
}

/// Some programs read a number with a leading zero as octal.
bool IsNumber(std::string_view text) {
    if (text.size() > 1 && text.front() == '0') return false;
    return TakeNumber(text) && text.empty();
}

struct Unit {
    char letter;
    std::uint64_t seconds;
};

constexpr Unit kUnits[] = {{'d', 86400}, {'h', 3600}, {'m', 60}, {'s', 1}};
constexpr std::uint64_t kLongestLife = std::numeric_limits<std::int32_t>::max();

void SkipBlanks(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
}

/// "7d 0h 0m 0s": the units in this order, each at most once.
bool IsLifeInUnits(std::string_view text) {
    std::uint64_t seconds = 0;
    const Unit* next = std::begin(kUnits);
    do {
        const std::optional<std::uint64_t> number = TakeNumber(text);
        if (!number || text.empty()) return false;
        while (next != std::end(kUnits) && next->letter != text.front())
            ++next;
        if (next == std::end(kUnits)) return false;
        seconds += *number * next++->seconds;
        text.remove_prefix(1);
        SkipBlanks(text);
    } while (!text.empty());
    return seconds <= kLongestLife;
}

/// "36000", "10:00", "10:00:00" or "7-00:00:00".
bool IsLifeInNumbers(std::string_view text) {
    const std::optional<std::uint64_t> first = TakeNumber(text);
    if (!first) return false;
    const bool hasDays = text.starts_with('-');
    std::uint64_t seconds = *first * (hasDays ? 86400U : text.empty() ? 1U : 3600U);
    std::uint64_t unit = hasDays ? 3600 : 60;
    int parts = 0;
    while (!text.empty() && unit > 0) {
        if (text.front() != (hasDays && parts == 0 ? '-' : ':')) return false;
        text.remove_prefix(1);
        const std::optional<std::uint64_t> number = TakeNumber(text);
        if (!number) return false;
        seconds += *number * unit;
        unit /= 60;
        ++parts;
    }
    return text.empty() && (!hasDays || parts == 3) && seconds <= kLongestLife;
}

/// A ticket lifetime as Kerberos reads it.
bool IsDuration(std::string_view text) {
    return IsLifeInUnits(text) || IsLifeInNumbers(text);
}

bool IsFlag(std::string_view value) {
    return ReadFlag(value).has_value();
}

/// The daemons that get these expressions write them between two "/".
bool HasBareSlash(std::string_view pattern) {
    bool isInBrackets = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '/' && !isInBrackets) return true;
        if (pattern[i] == '\\') {
            i += pattern.substr(i + 1).starts_with('/') ? 0 : 1;
        } else if (pattern[i] == '[' && !isInBrackets) {
            isInBrackets = true;
            if (pattern.substr(i + 1).starts_with('^')) ++i;
            if (pattern.substr(i + 1).starts_with(']')) ++i;
        } else if (pattern[i] == ']') {
            isInBrackets = false;
        }
    }
    return false;
}

bool IsRegularExpression(const std::string& pattern) {
    if (HasBareSlash(pattern)) return false;
    try {
        RegEx().Match(pattern, "");
        return true;
    } catch (const EZETHostError&) {
        throw;  // without the library the value cannot be judged
    } catch (const EZETError&) {
        return false;
    }
}

bool IsForTemplates(const ZETParameter& parameter) {
    const ParameterEntry* const entry = FindParameter(parameter.name);
    return entry != nullptr && entry->isForTemplates;
}

/// Templates put paths in double quotes, where one of these characters would end the name or begin an escape.
bool IsPath(const ZETParameter& parameter, const std::string& path) {
    if (!path.starts_with('/')) return false;
    return !IsForTemplates(parameter) ||
           (path.find_first_of("\"\\") == std::string::npos && Printable(path) == path);
}

bool HasLocale(const std::string& name) {
    const locale_t locale = newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, name.c_str(), nullptr);
    if (locale == nullptr) return false;
    freelocale(locale);
    return true;
}

bool IsOneOf(const std::vector<std::string>& words, const std::string& value) {
    return std::find(words.begin(), words.end(), value) != words.end();
}

std::string ListOf(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words)
        list.append(list.empty() ? "" : ", ").append(word);
    return list;
}

struct KindRules {
    ZETParameterKind kind;
    const char* name;
    const char* inWords;
    const char* howToWrite;
    bool (*judge)(const ZETParameter& parameter, const std::string& value);
};

/// A check that looks at the value alone.
template <auto judge>
bool Judge(const ZETParameter& /*parameter*/, const std::string& value) {
    return judge(value);
}

constexpr KindRules kKinds[] = {
    {ZETParameterKind::DomainName, "domain name", CORE_TEXT("a domain name"),
     CORE_TEXT("write it like example.org"), Judge<IsDomainName>},
    {ZETParameterKind::HostName, "host name", CORE_TEXT("a host name"),
     CORE_TEXT("write it like server.example.org, or an IPv4 address"), Judge<IsHostName>},
    {ZETParameterKind::Realm, "Kerberos realm", CORE_TEXT("a Kerberos realm"),
     CORE_TEXT("write it like EXAMPLE.ORG"), Judge<IsRealm>},
    {ZETParameterKind::LdapName, "LDAP name", CORE_TEXT("an LDAP name"),
     CORE_TEXT("write it like dc=example,dc=org"), Judge<IsLdapName>},
    {ZETParameterKind::Number, "number", CORE_TEXT("a number"),
     CORE_TEXT("write decimal digits, up to 4294967295 and without zeros in front"), Judge<IsNumber>},
    {ZETParameterKind::Duration, "duration", CORE_TEXT("a duration"),
     CORE_TEXT("write it like 7d 12h 30m 0s, 12:30 or 3600, which is seconds"), Judge<IsDuration>},
    {ZETParameterKind::RegularExpression, "regular expression", CORE_TEXT("a regular expression"),
     CORE_TEXT("close its brackets, put a backslash before what is meant as it stands, and write [/] for /"),
     Judge<IsRegularExpression>},
    {ZETParameterKind::AbsolutePath, "absolute path", CORE_TEXT("an absolute path"),
     CORE_TEXT("begin it with \"/\""), IsPath},
    {ZETParameterKind::YesNo, "yes or no", CORE_TEXT("yes or no"), CORE_TEXT("write yes or no"),
     Judge<IsFlag>},
    {ZETParameterKind::Locale, "locale", CORE_TEXT("a locale of this host"),
     CORE_TEXT("generate it, or take one that \"locale -a\" lists"), Judge<HasLocale>},
    {ZETParameterKind::OneOf, "", "", CORE_TEXT("write one of them"),
     [](const ZETParameter& parameter, const std::string& value) { return IsOneOf(parameter.words, value); }},
};

const KindRules& Find(ZETParameterKind kind) {
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [&](const KindRules& each) { return each.kind == kind; });
}

}  // namespace

std::optional<bool> ReadFlag(std::string_view value) {
    if (value == "yes" || value == "true" || value == "1") return true;
    if (value == "no" || value == "false" || value == "0") return false;
    return std::nullopt;
}

bool IsOfKind(const ZETParameter& parameter, const std::string& value) {
    return Find(parameter.kind).judge(parameter, value);
}

std::string NameOfKind(const ZETParameter& parameter) {
    const bool isChoice = parameter.kind == ZETParameterKind::OneOf;
    return isChoice ? "one of " + ListOf(parameter.words) : Find(parameter.kind).name;
}

std::string KindInWords(const ZETParameter& parameter) {
    if (parameter.kind == ZETParameterKind::OneOf)
        return Message("one of %s", ListOf(parameter.words).c_str());
    return Translated(Find(parameter.kind).inWords);
}

std::string HowToWrite(const ZETParameter& parameter) {
    if (parameter.kind == ZETParameterKind::AbsolutePath && IsForTemplates(parameter))
        return Message(
            "begin it with \"/\", and leave out double quotes, backslashes and control characters");
    return Translated(Find(parameter.kind).howToWrite);
}

}  // namespace ZET::Core
