#ifndef ZET_TEMPLATE_FILES_H
#define ZET_TEMPLATE_FILES_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/Host.h"
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

/// Where the shipped text of a template is, and the working copy of it: whether they are there or not.
std::string ShippedFile(Host& host, const std::string& templateName);
std::string WorkingCopy(Host& host, const std::string& templateName);

/// The file that a template is rendered from: its working copy, or the pristine one as long as there is none.
/// Empty when there is neither.
std::string TemplateFile(Host& host, const std::string& templateName);

TemplateFiles FilesOfTemplate(Host& host, const std::string& name);

/// That there is none of the name that the caller gave.
Failure MissingTemplate(const TemplateFiles& files);

/// The templates of these names, of the host's role all that the list has where there are none. A name that
/// leaves the directory of the templates is a `UsageError`.
std::vector<TemplateFiles> FilesOfTemplates(Host& host, const std::vector<std::string>& names);

/// Of the templates' files, those that a command is going to write.
struct FilesToWrite {
    std::string templateName;
    std::vector<std::string> files;
};

/// All of them. Two templates must not write the same file, of which what the first one kept would be lost,
/// nor one that has another use: that is a `UsageError`.
std::vector<std::string> AllToWrite(Host& host, const std::vector<FilesToWrite>& templates);

/// A `Failure` when one of the files is a link that leads out of the root directory.
void RequireInside(Host& host, const TemplateFiles& files);

/// The working copy is going to be what is shipped; a text that is too long to be kept is no base.
void SetShipped(ExpectedFile& workingCopy, CapturedFile shipped);

/// A working copy that is missing is going to be installed; one that is there is not touched.
void ExpectWorkingCopy(Recording& recording, Host& host, const std::string& templateName);

/// The working copy itself, links followed.
std::string RealFileOf(const Host& host, const std::string& workingCopy);

/// What the history knows of a working copy.
struct CopyMemory {
    std::optional<std::string> base;  ///< the shipped text of then that it was made from
    std::optional<mode_t> mode;       ///< that the product left it with
};

CopyMemory MemoryOf(Host& host, const std::string& workingCopy);

/// A working copy in that state is known by the mode that the product gave it, so that one that somebody set
/// stays his.
RecordedState WithMode(RecordedState copy, mode_t own);

/// From now on, the working copy as it is was made from `base`; under the product's lock.
void RememberBase(Host& host, const std::string& workingCopy, const std::string& base);

/// A working copy that holds the shipped text was made from that, however it came there: whoever edits it by
/// hand can be told so later. Under the product's lock.
void RememberShippedBase(Host& host, const TemplateFiles& files);

}  // namespace ZET::Deploy

#endif
