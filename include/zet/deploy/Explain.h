#ifndef ZET_DEPLOY_EXPLAIN_H
#define ZET_DEPLOY_EXPLAIN_H

#include <cstddef>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Consecutive lines of a file that have the same origin. Line numbers start at 1; 0 means none.
struct ExplainedRegion {
    std::string kind;  ///< "own", "gap", "former-line", "block", "notice", "template-comment", "template",
                       ///< "differing", "untraced"
    std::size_t firstLine = 0;
    std::size_t lastLine = 0;
    bool isClosed = true;                   ///< false if its end marker is missing
    std::size_t templateLine = 0;           ///< the first template line that it is made from
    std::size_t formerLine = 0;             ///< for a block: the line that keeps the former text
    std::size_t blockLine = 0;              ///< for a kept former line: the first line of its block
    std::string formerText;                 ///< the text that is kept; empty for other regions
    std::vector<std::string> placeholders;  ///< those in the template's lines
};

struct Explanation {
    std::string path;                      ///< of the real file
    std::string templateName;              ///< empty if no notice names one
    std::string templateFile;              ///< empty if it is gone
    std::string reserve;                   ///< the file as it was before; empty if none is kept
    bool hadNoFile = false;                ///< true if the file did not exist before
    std::vector<ExplainedRegion> regions;  ///< together they cover every line
};

/// Tells where the file and its lines come from. Nothing is written.
ZET_API Explanation Explain(Product& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
