#include "deploy/host/StagedOwner.h"

#include <sys/stat.h>
#include <unistd.h>

#include "deploy/host/FileState.h"
#include "deploy/host/StagedFile.h"
#include "posix/PathNames.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

bool HaveSameOwner(const FileState& one, const FileState& other) {
    return one.owner == other.owner && one.group == other.group;
}

FileState StateOfOwn(mode_t mode) {
    FileState state;
    state.exists = true;
    state.mode = S_IFREG | mode;
    state.links = 1;
    state.owner = geteuid();
    state.group = getegid();
    return state;
}

/// Returns the state that the file then has.
FileState GiveTo(const FileState& former, const StagedText& staged) {
    const FileState state = StateOf(staged.File());
    if (HaveSameOwner(state, former)) return state;
    GiveStagedFile(staged.File(), former.owner, former.group);
    return StateOf(staged.File());
}

}  // namespace

FileState GiveOwnerInPlace(const std::string& path, const std::string& staged) {
    return GiveOwnerInPlace(path, StagedText(staged), StateOf(path));
}

FileState GiveOwnerInPlace(const std::string& path, const StagedText& staged, const FileState& replaced) {
    const FileState former = replaced.IsRegular() ? replaced : StateOf(path + ZETReserveSuffix);
    FileState state = StateOfOwn(staged.Mode());
    if (former.IsRegular() && HaveSameOwner(state, former)) return state;
    const FileState directory = StateOf(DirectoryOf(path) + "/.");
    if ((directory.mode & S_ISGID) != 0) state.group = directory.group;
    if (!former.IsRegular()) return state;
    const FileState given = GiveTo(former, staged);
    if (given.owner == former.owner) state.owner = given.owner;
    if (given.group == former.group) state.group = given.group;
    return state;
}

}  // namespace ZET::Deploy
