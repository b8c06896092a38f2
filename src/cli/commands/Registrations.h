#ifndef ZET_REGISTRATIONS_H
#define ZET_REGISTRATIONS_H

#include <string_view>

#include "cli/CommandLine.h"

/// The functions that register the commands of each file.
namespace ZET::Cli {

void RegisterCommit(CommandLine& line);
void RegisterCheck(CommandLine& line);
void RegisterRollback(CommandLine& line);
void RegisterUndo(CommandLine& line);
void RegisterAdopt(CommandLine& line);
void RegisterStatus(CommandLine& line);
void RegisterValues(CommandLine& line);
void RegisterTemplate(CommandLine& line);
void RegisterParam(CommandLine& line);
void RegisterLine(CommandLine& line);
void RegisterFile(CommandLine& line);
void RegisterOption(CommandLine& line);
void RegisterHistory(CommandLine& line);
void RegisterExplain(CommandLine& line);
void RegisterDoctor(CommandLine& line);
void RegisterHelp(CommandLine& line);

/// The first word of a command and the function that registers it, in the order of the help.
struct Registration {
    std::string_view word;
    void (*add)(CommandLine& line);
};

inline constexpr Registration kRegistrations[] = {
    {"commit-config", RegisterCommit},
    {"check-config", RegisterCheck},
    {"rollback-config", RegisterRollback},
    {"undo", RegisterUndo},
    {"status", RegisterStatus},
    {"adopt", RegisterAdopt},
    {"values", RegisterValues},
    {"template", RegisterTemplate},
    {"param", RegisterParam},
    {"line", RegisterLine},
    {"file", RegisterFile},
    {"option", RegisterOption},
    {"history", RegisterHistory},
    {"explain", RegisterExplain},
    {"doctor", RegisterDoctor},
    {"help", RegisterHelp},
};

}  // namespace ZET::Cli

#endif
