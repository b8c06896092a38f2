#ifndef ZET_TEMPLATE_FILES_H
#define ZET_TEMPLATE_FILES_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/HostProduct.h"
#include "deploy/state/Recording.h"

/// A template on the host: the shipped text, the working copy of it, and the text that the copy was made
/// from.
namespace ZET::Deploy {

/// What "template install --force" keeps beside a working copy.
inline constexpr char kKeptSuffix[] = ".old";

struct TemplateFiles {
    std::string name;
    std::string shipped;
    std::string workingCopy;
};

/// Where the shipped text of a template and its working copy are, whether they are there or not.
std::string ShippedFile(Host& host, const std::string& templateName);
std::string WorkingCopy(Host& host, const std::string& templateName);

/// The file that a template is rendered from: its working copy, or else the pristine template. Empty if there
/// is neither.
std::string TemplateFile(Host& host, const std::string& templateName);

TemplateFiles FilesOfTemplate(Host& host, const std::string& name);

/// The failure for a template that the caller named and that does not exist.
Failure MissingTemplate(const TemplateFiles& files);

/// The templates of these names or, without names, all that the list has for the host's role. Throws a
/// `UsageError` for a name that leaves the directory of the templates.
std::vector<TemplateFiles> FilesOfTemplates(Host& host, const std::vector<std::string>& names);

/// The files of a template that a command is going to write.
struct FilesToWrite {
    std::string templateName;
    std::vector<std::string> files;
};

/// All of these files. Throws a `UsageError` if two templates write the same file, since what the first one
/// kept would be lost, or if a file has another use.
std::vector<std::string> AllToWrite(Host& host, const std::vector<FilesToWrite>& templates);

/// Throws a `Failure` if one of the files is a link that leads out of the root directory.
void RequireInside(Host& host, const TemplateFiles& files);

/// Expects the working copy to become what is shipped. A text that is too long to be kept is no base.
void SetShipped(ExpectedFile& workingCopy, CapturedFile shipped);

/// Expects a missing working copy to be installed. One that is there is not touched.
void ExpectWorkingCopy(Recording& recording, Host& host, const std::string& templateName);

/// Has the module install the working copy, if it is missing.
void InstallMissingCopy(HostProduct& product, const std::string& templateName);

/// The working copy itself, links followed.
std::string RealFileOf(const Host& host, const std::string& workingCopy);

/// What the history knows of a working copy.
struct CopyMemory {
    std::optional<std::string> base;  ///< the shipped text that it was made from
    std::optional<mode_t> mode;       ///< the mode that the product gave it
};

CopyMemory MemoryOf(Host& host, const std::string& workingCopy);

/// The working copy's state with the mode that the product gave it, so that a mode that somebody set stays an
/// edit.
RecordedState WithMode(RecordedState copy, mode_t own);

/// Records that the working copy as it is was made from `base`. Needs the product's lock.
void RememberBase(Host& host, const std::string& workingCopy, const std::string& base);

/// Records that a working copy with the shipped text was made from that, however it came there, so that later
/// edits by hand are recognised. Needs the product's lock.
void RememberShippedBase(Host& host, const TemplateFiles& files);

}  // namespace ZET::Deploy

#endif
