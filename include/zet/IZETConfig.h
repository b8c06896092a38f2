#ifndef ZET_IZETCONFIG_H
#define ZET_IZETCONFIG_H

#include <memory>
#include <string>

#include "zet/IZETConfigFile.h"
#include "zet/ZETInterface.h"
#include "zet/ZETTypes.h"

namespace ZET {

/// The module's configuration interface; the core finds it by the name "zet-config". The order of the
/// operations is part of the contract. Calls must not overlap. Exceptions of the core pass through
/// everywhere.
class IZETConfig : public CZETInterface {
  public:
    using CZETInterface::CZETInterface;
    ~IZETConfig() override = default;

    /// A file to edit in place, owned by the caller; null, with a log record, when it cannot be read. `role`
    /// is "server" or "client"; anything but "server" counts as the client. With `noMarkers` no marker line
    /// is ever written. An empty name throws `EZETCheckError`.
    virtual std::shared_ptr<IZETConfigFile> OpenConfigFile(const std::string& fileName,
                                                           const std::string& role, bool noMarkers) = 0;

    /// The template's working copy, installed first when it is missing, to be saved as `fileName`; owned by
    /// the caller. Null, with a log record, when it cannot be read. An empty name, of the template or of the
    /// file, throws `EZETCheckError`.
    virtual std::shared_ptr<IZETConfigFile> OpenConfigFileTemplate(const std::string& templateName,
                                                                   const std::string& fileName,
                                                                   const std::string& role,
                                                                   bool noMarkers) = 0;

    /// Builds the template values anew from the core; values set by `SetTemplateValue` are lost.
    virtual void RecreateTemplatesMap() = 0;

    /// The template values by placeholder, built first when there are none. The object owns the map.
    virtual StringMap& TemplatesValues() = 0;

    /// Copies the pristine template over the working copy; a missing one is logged, not thrown.
    virtual void InstallConfigFileTemplate(const std::string& templateName) = 0;

    /// Renders a template into `fileName`. `values`, which may be null, wins over the template values for
    /// this run. A template that cannot be opened is only logged. In the place of the file, a link is
    /// replaced by a file and a directory is renamed to the name of its reserve: who wants neither looks
    /// before. An empty name throws `EZETCheckError`, a file that cannot be saved `EZETError`. Never returns
    /// when a placeholder outside a comment line has no end, or a value holds its own placeholder.
    virtual void ProcessConfigFileTemplate(const std::string& templateName, const std::string& fileName,
                                           const std::string& role, StringMap* values) = 0;

    /// Keeps a copy of the file as it is, or the record that there is none; once: a later call keeps the
    /// first.
    virtual void ReserveConfigFile(const std::string& fileName) = 0;

    /// Puts the reserve back, if there is one, and drops the record that there was no file; a file that the
    /// system made stays.
    virtual void RestoreConfigFile(const std::string& fileName) = 0;

    /// Drops the reserve and the record; the file stays as it is.
    virtual void RemoveConfigFileReserve(const std::string& fileName) = 0;

    /// Takes the managed blocks out of a file and saves it; does nothing when the file cannot be read.
    virtual void RemoveZETMarkersFromConfigFile(const std::string& fileName) = 0;

    /// Sets a parameter in the product's main configuration file ("ZET_CFG"), then in the core. False, and
    /// nothing changed, when the file cannot be read. The file is written first and unchecked: a name that is
    /// none, or a line feed or a NUL byte in the value, makes a file with which no host starts.
    virtual bool UpdateConfigFileParam(const std::string& name, const std::string& value) = 0;

    /// The value of a whole placeholder, "${realm}"; empty, with a log record, when it is unknown.
    virtual std::string TemplateValue(const std::string& placeholder) = 0;

    /// Whether there is a value of that whole placeholder; nothing is logged.
    virtual bool TemplateValueExists(const std::string& placeholder) = 0;

    /// Sets or adds a value, until the values are built anew.
    virtual void SetTemplateValue(const std::string& placeholder, const std::string& value) = 0;

    /// Has the core write its settings into the status file of a mode, "server" or "client". An empty mode
    /// throws `EZETCheckError`, another one `EZETInternalError`, here and in the three operations that
    /// follow; a file that cannot be opened `EZETError`.
    virtual void SaveConfigStatus(const std::string& mode) = 0;

    /// Whether the status file is there, whatever it holds. Not being able to tell throws `EZETError`.
    virtual bool IsConfigStatusExist(const std::string& mode) = 0;

    /// A status file that is missing is no error.
    virtual void RemoveConfigStatus(const std::string& mode) = 0;

    /// Replaces the contents of `values` by the entries of the status file; empty on every failure. A missing
    /// file throws `EZETError`.
    virtual void LoadConfigStatus(const std::string& mode, StringMap& values) = 0;

    /// Records the type of the network file system, the parameter "NETWORK_FS_TYPE". A file that cannot be
    /// opened throws `EZETError`; a write into it that fails is not reported.
    virtual void SaveFileServerStatus() = 0;

    /// The recorded type; empty when none is recorded. A record that is there and cannot be read throws
    /// `EZETError`.
    virtual std::string GetFileServerStatus() = 0;

    /// A record that is missing is no error.
    virtual void RemoveFileServerStatus() = 0;
};

}  // namespace ZET

#endif
