#ifndef ZET_SHOWN_DIFF_H
#define ZET_SHOWN_DIFF_H

#include <cstddef>
#include <string>

#include "deploy/host/DiffSet.h"
#include "deploy/state/store/Records.h"
#include "deploy/targets/Deployment.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// The path as the labels of a diff have it: one with ".." in it is none that `patch` accepts.
std::string ShownPath(const std::string& path);

/// The diff of a change of `path`, or of its companion `shownPath`, if one is wanted: of a text that is not
/// for everybody, only where it changes.
ShownDiff DiffToShow(Deployment& product, const std::string& oldFile, const std::string& newFile,
                     const std::string& path, const std::string& shownPath = "");

/// The same of a pair of files that was compared together with others.
ShownDiff DiffToShow(Deployment& product, const DiffSet& diffs, std::size_t pair, const std::string& path);

/// Where the texts differ, without the texts; `excuse` says why.
ShownDiff WithoutText(ShownDiff diff, const std::string& path, const std::string& excuse);

/// The same of what a commit wrote by the history, and no list has any more: it may have been called secret.
ShownDiff WithoutFormerSecrets(Deployment& product, ShownDiff diff, const RecordedFile& file,
                               const std::string& path);

/// Whether the text is not for everybody: that of the file as it is, or as it was.
bool IsPrivate(Deployment& product, const FileOutcome& outcome);

}  // namespace ZET::Deploy

#endif
