#ifndef ZET_TEMPLATE_FILES_H
#define ZET_TEMPLATE_FILES_H

#include <string>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/state/HostProduct.h"

/// A template on the host: the shipped text, and the working copy of it.
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

/// Throws a `UsageError` unless the name stays in the directory of the templates and is spelled as a list
/// could spell it.
void RequireTemplateName(const std::string& name);

/// The templates of these names, as they are required to be, or, without names, all that the list has for the
/// host's role.
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

/// Has the module install the working copy, if it is missing.
void InstallMissingCopy(HostProduct& product, const std::string& templateName);

}  // namespace ZET::Deploy

#endif
