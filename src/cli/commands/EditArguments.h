#ifndef ZET_EDIT_ARGUMENTS_H
#define ZET_EDIT_ARGUMENTS_H

#include <optional>
#include <string>

#include "cli/CommandLine.h"
#include "cli/Translation.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/Failure.h"

/// The arguments of commands that edit a file in place. `Given` is derived from `EditOptions`.
namespace ZET::Cli {

/// For an edit that supports sections.
struct SectionOptions : EditOptions {
    bool isBeforeSections = false;
};

/// The section in the form of `EditOptions`. An empty word is a mistake: somebody forgot to fill it in.
inline std::optional<std::string> SectionOf(const SectionOptions& asked) {
    if (!asked.section) return asked.isBeforeSections ? std::optional<std::string>("") : std::nullopt;
    if (asked.isBeforeSections)
        throw UsageError(_("--section and --no-section are given (leave one of them out)"));
    if (asked.section->empty())
        throw UsageError(_("SECTION is empty (--no-section is for the lines before the first one)"));
    return asked.section;
}

inline EditOptions OptionsOf(const SectionOptions& asked) {
    EditOptions options = asked;
    options.section = SectionOf(asked);
    return options;
}

template <typename Given>
void AddSection(Command<Given>& command) {
    command.Option("--section", "SECTION", &EditOptions::section, "Only below the line [SECTION]");
    command.Flag("--no-section", &SectionOptions::isBeforeSections, "Only before the first section");
}

template <typename Given>
void AddForce(Command<Given>& command) {
    command.Flag("--force", &EditOptions::force, "Edit a committed target, too");
}

/// For a file that is replaced, not edited.
inline constexpr char kForceHelp[] = ZET_TEXT("Over changes that are kept nowhere, too");

template <typename Given>
void AddNoBackup(Command<Given>& command) {
    command.Flag("--no-backup", &EditOptions::noBackup, "Keep no reserve of the file");
}

template <typename Given>
void AddEditOptions(Command<Given>& command) {
    AddForce(command);
    command.Flag("--no-markers", &EditOptions::noMarkers, "Edit without marker lines");
    AddNoBackup(command);
}

template <typename Given>
void AddRestoreOptions(Command<Given>& command) {
    command.Flag("--all-blocks", &EditOptions::allBlocks, "Take the managed blocks of other lines out, too");
    AddEditOptions(command);
}

}  // namespace ZET::Cli

#endif
