#ifndef ZET_TEMPLATE_HISTORY_H
#define ZET_TEMPLATE_HISTORY_H

#include <sys/types.h>

#include <optional>
#include <string>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/Host.h"
#include "deploy/state/Recording.h"
#include "deploy/targets/TemplateFiles.h"
#include "zet/ZETProblem.h"

/// What the history knows of a template's working copy, and of the text that the copy was made from.
namespace ZET::Deploy {

/// Expects the working copy to become what is shipped. A text that is too long to be kept is no base.
void SetShipped(ExpectedFile& workingCopy, CapturedFile shipped);

/// Expects a missing working copy to be installed. One that is there is not touched.
void ExpectWorkingCopy(Recording& recording, Host& host, const std::string& templateName);

/// The working copy itself, links followed.
std::string RealFileOf(const Host& host, const std::string& workingCopy);

/// What the history knows of a working copy.
struct CopyMemory {
    std::optional<std::string> base;  ///< the shipped text that it was made from
    std::optional<mode_t> mode;       ///< the mode that the product gave it; none: nobody knows
};

CopyMemory MemoryOf(Host& host, const std::string& workingCopy);

/// The working copy's state with the mode that the product gave it, so that a mode that somebody set stays an
/// edit.
RecordedState WithMode(RecordedState copy, mode_t own);

/// Says that this user cannot be told what the file was made from: only the history knows.
Problem ProblemOfDenied(Host& host, const std::string& file);

/// Records that the working copy as it is was made from `base`, and that the product gave it the mode `own`.
/// Needs the product's lock.
void RememberBase(Host& host, const std::string& workingCopy, const std::string& base, mode_t own);

/// Records that a working copy with the shipped text was made from that, however it came there, so that later
/// edits by hand are recognised. Needs the product's lock.
void RememberShippedBase(Host& host, const TemplateFiles& files);

}  // namespace ZET::Deploy

#endif
