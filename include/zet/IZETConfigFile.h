#ifndef ZET_IZETCONFIG_FILE_H
#define ZET_IZETCONFIG_FILE_H

#include <string>

#include "zet/ZETTypes.h"

namespace ZET {

/// One managed configuration file in memory. Its life is one call of `Open` or `OpenTemplate`; after that
/// returned true, any number of edits; then `Save`, more than once if wanted. Used by one thread at a time.
/// Two objects on one file do not know of each other: the last `Save` wins.
///
/// In every operation, an empty file name, pattern or parameter name throws `EZETCheckError` and changes
/// nothing. Exceptions of the core pass through and leave the text as it was; `Save` and `RemoveZETMarkers`,
/// which change it in several steps, leave it as it was after the last finished step.
///
/// If no file was opened, `ApplyTemplates`, `RemoveMarkers` and `RemoveZETMarkers` throw `EZETCheckError`;
/// the other operations do not check and must not be called.
///
/// A lookup (`GetLine`, `GetParamValue`) that finds nothing exhausts the text: every later operation on the
/// object sees no lines. To look something up and then edit, open the file again in between.
class IZETConfigFile {
  public:
    /// Reads the file to edit it in place. `role` is "server" or "client"; anything but "server" counts as
    /// the client. With `noMarkers` no marker line is ever written. Returns false, with a log record, if the
    /// file cannot be read; the object is then of no further use.
    virtual bool Open(const std::string& fileName, const std::string& role, bool noMarkers) = 0;

    /// Reads the working copy of a template, to be saved as `fileName`. Otherwise as `Open`.
    virtual bool OpenTemplate(const std::string& templateName, const std::string& fileName,
                              const std::string& role, bool noMarkers) = 0;

    /// Replaces every placeholder outside comment lines with its value. `values` is only read; its keys are
    /// whole placeholders, such as "${realm}". An unknown placeholder is logged, and its "$" becomes "!".
    /// Never returns if a placeholder outside a comment line has no end, or a value contains its own
    /// placeholder. Throws `EZETCheckError` if no file is open.
    virtual void ApplyTemplates(StringMap& values) = 0;

    /// Removes every region from a line that begins with `beginMarker` to the next that begins with
    /// `endMarker`, or to the end of the text. Throws `EZETCheckError` if no file is open.
    virtual void RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) = 0;

    /// Removes the managed blocks and the notice; kept former lines stay commented out.
    virtual void RemoveZETMarkers() = 0;

    /// Sets every line "name=..." (blanks before the name allowed), commented out with "#" or not, to
    /// "name=value"; appends one if there is none. `name` is inserted unescaped into a regular expression.
    virtual void SetParamValue(const std::string& name, const std::string& value) = 0;

    /// The text after the first "=" of the first line "name=...", unchanged; empty if there is no such line.
    virtual std::string GetParamValue(const std::string& name) = 0;

    /// As `RestoreLine`, for the lines that `SetParamValue` replaced under this name.
    virtual void RestoreParamValue(const std::string& name) = 0;

    /// Replaces every line that contains a match of `pattern` with `line`. Each former line outside a managed
    /// block is kept before a block of its own. Appends a block if no line matches.
    virtual void SetLine(const std::string& pattern, const std::string& line) = 0;

    /// The first line that contains a match of `pattern`, marker lines included; empty if there is none.
    virtual std::string GetLine(const std::string& pattern) = 0;

    /// Removes all managed blocks, and brings back the kept former lines whose text matches `pattern` from
    /// its start.
    virtual void RestoreLine(const std::string& pattern) = 0;

    /// Writes a temporary file with the permission bits of the file that was read, and renames it onto the
    /// target. The new file gets the owner of the regular file at the target's name; if the caller may not
    /// set that, it belongs to the caller and has no set-user-ID and set-group-ID bits. The owner of a
    /// template does not matter. A link at the target's name is replaced itself, wherever it leads. Unless
    /// `noBackup`, the state before the system first wrote the file is kept once. Throws `EZETError` on
    /// failure; until the last step the target is as before, or in its reserve.
    virtual void Save(bool noBackup) = 0;

    virtual ~IZETConfigFile() = default;
};

}  // namespace ZET

#endif
