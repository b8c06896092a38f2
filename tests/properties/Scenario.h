#ifndef ZET_TESTS_SCENARIO_H
#define ZET_TESTS_SCENARIO_H

#include <sys/types.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "zet/ZETTypes.h"

namespace ZET {

/// What exists at a path before an engine runs.
struct Place {
    enum class Kind { Missing, Regular, Directory, Fifo, Link, DanglingLink, SecondName };

    Kind kind = Kind::Missing;
    std::string bytes;  ///< of the file, or of the file that a link leads to
    mode_t mode = 0644;
    bool isForeign = false;  ///< owned by somebody else, if the tests can change owners
};

struct Operation {
    enum class Kind {
        ApplyTemplates,
        RemoveMarkers,
        RemoveZETMarkers,
        SetParamValue,
        GetParamValue,
        RestoreParamValue,
        SetLine,
        GetLine,
        RestoreLine,
        InsertHeader,
        Save
    };

    Kind kind = Kind::Save;
    std::string first;
    std::string second;
    bool noBackup = false;
};

/// A fault during the play.
struct Fault {
    enum class Kind {
        None,
        Call,      ///< the `count`th call of `call` throws
        NoFormat,  ///< no message can be formatted
        FileSize   ///< a save can write only `count` bytes
    };

    Kind kind = Kind::None;
    std::string call;
    std::size_t count = 1;
};

/// One file, how it is opened, and what is done with it.
struct Scenario {
    enum class Opening { Never, InPlace, Template };

    Opening opening = Opening::InPlace;
    std::string role;
    bool noMarkers = false;
    bool fileNameIsEmpty = false;
    bool templateNameIsEmpty = false;
    bool targetDirectoryIsMissing = false;
    std::string configDirectorySuffix;  ///< appended to the value of "ZET_CFG_DIR"
    Place source;                       ///< the file itself, or the template
    Place target;                       ///< of a template
    Place temporary;
    Place reserve;
    Place absence;
    mode_t mask = 022;
    bool headerIsTranslated = false;
    std::string translatedHeader;
    StringMap values;
    std::vector<Operation> operations;
    Fault fault;
};

/// The text as a C++ string literal.
std::string Quoted(const std::string& text);

std::ostream& operator<<(std::ostream& stream, const Place& place);
std::ostream& operator<<(std::ostream& stream, const Operation& operation);
std::ostream& operator<<(std::ostream& stream, const Fault& fault);
std::ostream& operator<<(std::ostream& stream, const Scenario& scenario);

}  // namespace ZET

#endif
