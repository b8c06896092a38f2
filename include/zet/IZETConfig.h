#ifndef ZET_IZETCONFIG_H
#define ZET_IZETCONFIG_H

#include <memory>
#include <string>

#include "zet/IZETConfigFile.h"
#include "zet/ZETInterface.h"
#include "zet/ZETTypes.h"

namespace ZET {

/// The module's configuration interface; the core finds it by the name "zet-config". The order of the
/// operations is part of the contract. Calls must not overlap. Every operation lets exceptions of the core
/// pass through.
class IZETConfig : public CZETInterface {
  public:
    using CZETInterface::CZETInterface;
    ~IZETConfig() override = default;

    /// Opens a file to edit it in place; the caller owns it. Returns null, with a log record, if the file
    /// cannot be read. `role` is "server" or "client"; anything but "server" counts as the client. With
    /// `noMarkers` no marker line is ever written. An empty name throws `EZETCheckError`.
    virtual std::shared_ptr<IZETConfigFile> OpenConfigFile(const std::string& fileName,
                                                           const std::string& role, bool noMarkers) = 0;

    /// Opens the template's working copy, to be saved as `fileName`, and installs it first if it is missing.
    /// The caller owns the result. Returns null, with a log record, if the copy cannot be read. An empty
    /// name, of the template or of the file, throws `EZETCheckError`.
    virtual std::shared_ptr<IZETConfigFile> OpenConfigFileTemplate(const std::string& templateName,
                                                                   const std::string& fileName,
                                                                   const std::string& role,
                                                                   bool noMarkers) = 0;

    /// Rebuilds the template values from the core; values set by `SetTemplateValue` are lost.
    virtual void RecreateTemplatesMap() = 0;

    /// The template values by placeholder, built first if there are none. The object owns the map.
    virtual StringMap& TemplatesValues() = 0;

    /// Copies the pristine template over the working copy; a missing one is logged, not thrown.
    virtual void InstallConfigFileTemplate(const std::string& templateName) = 0;

    /// Renders a template into `fileName`. `values`, which may be null, takes precedence over the template
    /// values for this run. A template that cannot be opened is only logged. If `fileName` is a link, it is
    /// replaced by a file; if it is a directory, it is renamed to the name of its reserve. A caller who wants
    /// neither checks first. An empty name throws `EZETCheckError`, a file that cannot be saved `EZETError`.
    /// Never returns if a placeholder outside a comment line has no end, or a value contains its own
    /// placeholder.
    virtual void ProcessConfigFileTemplate(const std::string& templateName, const std::string& fileName,
                                           const std::string& role, StringMap* values) = 0;

    /// Keeps a copy of the file as it is, or records that there is none. What an earlier call kept stays as
    /// it is.
    virtual void ReserveConfigFile(const std::string& fileName) = 0;

    /// Puts the reserve back, if there is one, and drops the record that there was no file. A file that the
    /// system created where there was none stays.
    virtual void RestoreConfigFile(const std::string& fileName) = 0;

    /// Drops the reserve and the record; the file stays as it is.
    virtual void RemoveConfigFileReserve(const std::string& fileName) = 0;

    /// Removes the managed blocks from a file and saves it; does nothing if the file cannot be read.
    virtual void RemoveZETMarkersFromConfigFile(const std::string& fileName) = 0;

    /// Sets a parameter in the product's main configuration file ("ZET_CFG"), then in the core. Returns
    /// false, and changes nothing, if the file cannot be read. The file is written first and without checks:
    /// an invalid name, or a line feed or NUL byte in the value, leaves a file with which no host starts.
    virtual bool UpdateConfigFileParam(const std::string& name, const std::string& value) = 0;

    /// The value of a whole placeholder, such as "${realm}"; empty, with a log record, if it is unknown.
    virtual std::string TemplateValue(const std::string& placeholder) = 0;

    /// Whether that whole placeholder has a value; nothing is logged.
    virtual bool TemplateValueExists(const std::string& placeholder) = 0;

    /// Sets or adds a value, which lasts until the values are rebuilt.
    virtual void SetTemplateValue(const std::string& placeholder, const std::string& value) = 0;

    /// Has the core write its settings into the status file of a mode, "server" or "client". An empty mode
    /// throws `EZETCheckError` and any other mode `EZETInternalError`, here and in the three operations that
    /// follow. A file that cannot be opened throws `EZETError`.
    virtual void SaveConfigStatus(const std::string& mode) = 0;

    /// Whether the status file exists, whatever it holds. Throws `EZETError` if that cannot be determined.
    virtual bool IsConfigStatusExist(const std::string& mode) = 0;

    /// Removes the status file; a missing one is no error.
    virtual void RemoveConfigStatus(const std::string& mode) = 0;

    /// Replaces the contents of `values` with the entries of the status file; leaves it empty on every
    /// failure. A missing file throws `EZETError`.
    virtual void LoadConfigStatus(const std::string& mode, StringMap& values) = 0;

    /// Records the type of the network file system, the parameter "NETWORK_FS_TYPE". A file that cannot be
    /// opened throws `EZETError`; a failed write into it is not reported.
    virtual void SaveFileServerStatus() = 0;

    /// The recorded type; empty if none is recorded. Throws `EZETError` if a record exists but cannot be
    /// read.
    virtual std::string GetFileServerStatus() = 0;

    /// Removes the record; a missing one is no error.
    virtual void RemoveFileServerStatus() = 0;
};

}  // namespace ZET

#endif
