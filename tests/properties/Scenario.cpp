#include "Scenario.h"

#include <array>
#include <cstdio>
#include <ostream>

namespace ZET {

namespace {

const char* NameOf(Place::Kind kind) {
    static constexpr std::array kNames = {"missing", "regular",       "directory",  "FIFO",
                                          "link",    "dangling link", "second name"};
    return kNames.at(static_cast<std::size_t>(kind));
}

const char* NameOf(Operation::Kind kind) {
    static constexpr std::array kNames = {"ApplyTemplates", "RemoveMarkers", "RemoveZETMarkers",
                                          "SetParamValue",  "GetParamValue", "RestoreParamValue",
                                          "SetLine",        "GetLine",       "RestoreLine",
                                          "InsertHeader",   "Save"};
    return kNames.at(static_cast<std::size_t>(kind));
}

const char* NameOf(Scenario::Opening opening) {
    static constexpr std::array kNames = {"never opened", "Open", "OpenTemplate"};
    return kNames.at(static_cast<std::size_t>(opening));
}

std::string Octal(mode_t mode) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0%o", static_cast<unsigned>(mode));
    return text.data();
}

std::string Escaped(char character) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '\n') return "\\n";
    if (character == '"' || character == '\\') return std::string("\\") + character;
    if (byte >= 0x20 && byte < 0x7f) return std::string(1, character);
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\%03o", static_cast<unsigned>(byte));
    return text.data();
}

}  // namespace

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : text)
        quoted += Escaped(character);
    return quoted + "\"";
}

std::ostream& operator<<(std::ostream& stream, const Place& place) {
    stream << NameOf(place.kind);
    if (place.kind == Place::Kind::Missing) return stream;
    stream << (place.isForeign ? " of somebody else " : " ");
    return stream << Octal(place.mode) << " " << Quoted(place.bytes);
}

std::ostream& operator<<(std::ostream& stream, const Operation& operation) {
    return stream << NameOf(operation.kind) << "(" << Quoted(operation.first) << ", "
                  << Quoted(operation.second) << (operation.noBackup ? ", no backup)" : ")");
}

std::ostream& operator<<(std::ostream& stream, const Fault& fault) {
    switch (fault.kind) {
        case Fault::Kind::None:
            return stream << "none";
        case Fault::Kind::Call:
            return stream << fault.call << " number " << fault.count << " throws";
        case Fault::Kind::NoFormat:
            return stream << "nothing can be formatted";
        case Fault::Kind::FileSize:
            return stream << "a save can write " << fault.count << " bytes";
    }
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const Scenario& scenario) {
    stream << NameOf(scenario.opening) << ", role " << Quoted(scenario.role)
           << (scenario.noMarkers ? ", no markers" : "")
           << (scenario.fileNameIsEmpty ? ", file name empty" : "")
           << (scenario.templateNameIsEmpty ? ", template name empty" : "")
           << (scenario.targetDirectoryIsMissing ? ", no target directory" : "")
           << "\n  ZET_CFG_DIR ends with " << Quoted(scenario.configDirectorySuffix) << ", mask "
           << Octal(scenario.mask) << "\n  source: " << scenario.source << "\n  target: " << scenario.target
           << "\n  temporary: " << scenario.temporary << "\n  reserve: " << scenario.reserve
           << "\n  absence: " << scenario.absence << "\n  fault: " << scenario.fault;
    if (scenario.headerIsTranslated) stream << "\n  header: " << Quoted(scenario.translatedHeader);
    for (const auto& [key, value] : scenario.values)
        stream << "\n  value of " << Quoted(key) << ": " << Quoted(value);
    for (const auto& operation : scenario.operations)
        stream << "\n  " << operation;
    return stream << "\n";
}

}  // namespace ZET
