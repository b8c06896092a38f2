#ifndef ZET_IZETCONFIG_FILE_H
#define ZET_IZETCONFIG_FILE_H

#include <string>

#include "zet/ZETTypes.h"

namespace ZET {

/// One managed configuration file in memory. Life: one call of `Open` or `OpenTemplate`; when it returned
/// true, any number of edits; then `Save`, more than once if wanted. Used by one thread at a time. Two
/// objects on one file know nothing of each other: the last `Save` wins.
///
/// Everywhere: an empty file name, pattern or parameter name throws `EZETCheckError` and changes nothing.
/// Exceptions of the core pass through and leave the text as it was; `Save` and `RemoveZETMarkers`, which
/// change it in several steps, as the last finished step left it.
///
/// Without a file that was opened, `ApplyTemplates`, `RemoveMarkers` and `RemoveZETMarkers` throw
/// `EZETCheckError`; the other operations check nothing and must not be called.
///
/// A lookup (`GetLine`, `GetParamValue`) that finds nothing exhausts the text: every later operation on the
/// object sees no lines. Who wants to look up and then edit opens the file again in between.
class IZETConfigFile {
  public:
    /// Reads the file to edit it in place. `role` is "server" or "client"; anything but "server" counts as
    /// the client. With `noMarkers` no marker line is ever written. False, with a log record, when the file
    /// cannot be read: the object is then of no further use.
    virtual bool Open(const std::string& fileName, const std::string& role, bool noMarkers) = 0;

    /// Reads the working copy of a template, to be saved as `fileName`. Otherwise as `Open`.
    virtual bool OpenTemplate(const std::string& templateName, const std::string& fileName,
                              const std::string& role, bool noMarkers) = 0;

    /// Replaces every placeholder outside comment lines by its value. `values` is only read; its keys are
    /// whole placeholders, "${realm}". An unknown one is logged and gets "!" for its "$". Never returns when
    /// a placeholder outside a comment line has no end, or a value holds its own placeholder. Throws
    /// `EZETCheckError` when no file is open.
    virtual void ApplyTemplates(StringMap& values) = 0;

    /// Takes out every region from a line that begins with `beginMarker` to the next that begins with
    /// `endMarker`, or to the end. Throws `EZETCheckError` when no file is open.
    virtual void RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) = 0;

    /// Takes out the managed blocks and the notice; kept former lines stay commented out.
    virtual void RemoveZETMarkers() = 0;

    /// Sets every line "name=..." (blanks before the name allowed), commented out with "#" or not, to
    /// "name=value"; appends one when there is none. `name` is part of a regular expression, unescaped.
    virtual void SetParamValue(const std::string& name, const std::string& value) = 0;

    /// What stands after the first "=" of the first line "name=...", unchanged; empty when there is none.
    virtual std::string GetParamValue(const std::string& name) = 0;

    /// As `RestoreLine`, for the lines that `SetParamValue` of this name replaced.
    virtual void RestoreParamValue(const std::string& name) = 0;

    /// Sets every line in which `pattern` is found to `line`, each former line outside a managed block kept
    /// before a block of its own; appends a block when none is found.
    virtual void SetLine(const std::string& pattern, const std::string& line) = 0;

    /// The first line in which `pattern` is found, markers and all; empty when there is none.
    virtual std::string GetLine(const std::string& pattern) = 0;

    /// Removes all managed blocks, and brings back the kept former lines whose text matches `pattern` from
    /// its start.
    virtual void RestoreLine(const std::string& pattern) = 0;

    /// Writes the file: through a temporary one with the permission bits of what was read, renamed onto the
    /// target. It is given to the owner of the regular file at the target's name; where the caller may not do
    /// that it is the caller's, without set-user-ID and set-group-ID bits. Whose a template is does not
    /// matter, nor where a link at the target's name leads to: the link itself is replaced. Unless
    /// `noBackup`, what was there before the system first wrote it is kept once. Throws `EZETError` when it
    /// fails; until the last step the target is as before, or in its reserve.
    virtual void Save(bool noBackup) = 0;

    virtual ~IZETConfigFile() = default;
};

}  // namespace ZET

#endif
