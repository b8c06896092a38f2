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
    std::string reserve;     ///< what stood there before; empty: nobody knows, or no file
    bool hadNoFile = false;  ///< there was none before
    bool isHidden = false;   ///< its texts are not for this reader
    std::size_t lineCount = 0;
    std::unique_ptr<const std::string> text;  ///< which the lines quote
    std::unique_ptr<const Text::ManagedText> regions;
    std::unique_ptr<const std::string> templateText;
    std::unique_ptr<const Text::TextExplanation> lines;
    std::vector<std::optional<LineAge>> ages;  ///< at the line's number less one; empty: nothing is known

    bool HasUntracedLines() const;
};

/// `file` is as the caller wrote it.
FileExplanation ExplainFile(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
