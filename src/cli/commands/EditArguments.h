#ifndef ZET_EDIT_ARGUMENTS_H
#define ZET_EDIT_ARGUMENTS_H

#include "cli/CommandLine.h"
#include "zet/deploy/EditOptions.h"

/// What the commands take that edit a file in place. `Given` is derived from `EditOptions`.
namespace ZET::Cli {

template <typename Given>
void AddForce(Command<Given>& command) {
    command.Flag("--force", &EditOptions::force, "Edit a committed target, too");
}

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
    command.Flag("--all-blocks", &EditOptions::allBlocks, "Drop the managed blocks of others too");
    AddEditOptions(command);
}

}  // namespace ZET::Cli

#endif
