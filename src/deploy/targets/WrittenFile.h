#ifndef ZET_WRITTEN_FILE_H
#define ZET_WRITTEN_FILE_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Paths.h"
#include "deploy/lists/Targets.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

/// A file that the product may have written.
struct WrittenFile {
    std::string templateName{};  ///< empty: the list does not have the file any more
    std::string path;            ///< of the real file, links followed
    Services services{};         ///< those that do not notice a change of the file by themselves
    std::string named;           ///< as the list has it, or as it would have it
    std::string trusted{};       ///< the user whose directories count as root's
    bool isOfBoth = true;        ///< the other role may have committed it, too
    /// Why the real file cannot be found. `path` is then as the list has it.
    std::optional<Failure> trouble{};
    bool isEdit = false;  ///< edited in single lines, and no target

    std::string Reserve() const { return path + ZETReserveSuffix; }
    std::string Absence() const { return path + ZETAbsenceSuffix; }
    bool MayGoBack() const { return trouble.has_value() || IsFileExist(Reserve()) || IsFileExist(Absence()); }

    FileInPlace PlaceIn(const Paths& paths) const {
        return FileInPlace(templateName.empty() ? paths.FindReal(path) : paths.Find(named, trusted), path);
    }

    /// Whether nothing has to be put back, except for attributes beyond owner and mode.
    bool IsAsReserved(const FileState& now, const FileState& reserve) const {
        return now.IsRegular() && reserve.IsRegular() && now.mode == reserve.mode &&
               now.owner == reserve.owner && now.group == reserve.group && HaveSameBytes(path, Reserve());
    }
};

}  // namespace ZET::Deploy

#endif
