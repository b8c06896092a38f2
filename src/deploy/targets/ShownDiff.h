#ifndef ZET_SHOWN_DIFF_H
#define ZET_SHOWN_DIFF_H

#include <cstddef>
#include <string>

#include "deploy/host/DiffSet.h"
#include "deploy/state/store/Records.h"
#include "deploy/targets/Deployment.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// The path for the labels of a diff: `patch` accepts none with ".." in it.
std::string ShownPath(const std::string& path);

/// The diff of a change of `path`, or of its companion `shownPath`, if diffs are wanted. Of a text that is
/// not for everybody, it only says where it changes.
ShownDiff DiffToShow(Deployment& product, const std::string& oldFile, const std::string& newFile,
                     const std::string& path, const std::string& shownPath = "");

/// The same for a pair of files that was compared together with others.
ShownDiff DiffToShow(Deployment& product, const DiffSet& diffs, std::size_t pair, const std::string& path);

/// Says where the texts differ, without the texts; `excuse` says why.
ShownDiff WithoutText(ShownDiff diff, const std::string& path, const std::string& excuse);

/// The same for what the history says a commit wrote, and no list has any more: it may have been called
/// secret.
ShownDiff WithoutFormerSecrets(Deployment& product, ShownDiff diff, const RecordedFile& file,
                               const std::string& path);

/// Whether the text is not for everybody: that of the file as it is, or as it was.
bool IsPrivate(Deployment& product, const FileOutcome& outcome);

}  // namespace ZET::Deploy

#endif
