#ifndef ZET_FILE_EXPLANATION_H
#define ZET_FILE_EXPLANATION_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "deploy/history/LineAges.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/FileOrigin.h"
#include "text/Explanation.h"

namespace ZET::Deploy {

/// Where a file and its lines come from.
struct FileExplanation {
    std::string path;  ///< of the real file
    FileOrigin origin;
    std::string reserve;     ///< where the former file is kept; empty: nobody knows, or there was none
    bool hadNoFile = false;  ///< it is on record that there was no file before
    bool isHidden = false;   ///< this reader must not see its texts
    std::size_t lineCount = 0;
    std::unique_ptr<const std::string> text;  ///< `lines` refers to it
    std::unique_ptr<const Text::ManagedText> regions;
    std::unique_ptr<const std::string> templateText;
    std::unique_ptr<const Text::TextExplanation> lines;
    std::vector<std::optional<LineAge>> ages;  ///< at index line number - 1; empty: nothing is known

    bool HasUntracedLines() const;
};

/// `file` is as the caller wrote it.
FileExplanation ExplainFile(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
