#ifndef ZET_FILE_ORIGIN_H
#define ZET_FILE_ORIGIN_H

#include <optional>
#include <string>

#include "deploy/lists/Targets.h"
#include "deploy/targets/Deployment.h"
#include "text/ManagedText.h"
#include "text/NoticeTexts.h"

namespace ZET::Deploy {

/// What a file is to the product.
struct FileOrigin {
    std::optional<Target> target;  ///< what the list of targets says about the file, for any role
    bool isPrivate = false;        ///< its text is not for everybody, or nobody can tell
    bool isMade = false;           ///< from a template, as its notice says; without one, as the history says
    std::string templateName;      ///< of a made file
    std::string templateFile;      ///< the working copy, or the pristine one; empty: there is neither
};

/// `file` is as the caller named it, and `text` what it holds. Without a list of targets that can be relied
/// on, the file counts as private.
FileOrigin FindOrigin(Deployment& product, const std::string& file, const Text::ManagedText& text,
                      const Text::NoticeTexts& noticeTexts);

/// The template that the notice at the head of a file names, as it stands there; empty if there is none.
std::string TemplateNamedIn(IZETCore& core, const std::string& path);

/// The texts of notices, in the language in which they are written into files.
Text::NoticeTexts WrittenNoticeTexts(IZETCore& core);

}  // namespace ZET::Deploy

#endif
