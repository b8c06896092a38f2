#ifndef ZET_DEPLOY_EXPLAIN_H
#define ZET_DEPLOY_EXPLAIN_H

#include <cstddef>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Lines of a file that have one origin. Numbers are from 1; 0 stands for none.
struct ExplainedRegion {
    std::string kind;  ///< "own", "gap", "former-line", "block", "notice", "template-comment", "template",
                       ///< "differing", "untraced"
    std::size_t firstLine = 0;
    std::size_t lastLine = 0;
    bool isClosed = true;                   ///< false: its end marker is missing
    std::size_t templateLine = 0;           ///< the first one that it is made from
    std::size_t formerLine = 0;             ///< of a block: the line that keeps what stood there before
    std::size_t blockLine = 0;              ///< of a kept former line: the first one of its block
    std::string formerText;                 ///< empty for whom it is not
    std::vector<std::string> placeholders;  ///< of the template's lines
};

struct Explanation {
    std::string path;                      ///< of the real file
    std::string templateName;              ///< empty: no notice says that it was made from one
    std::string templateFile;              ///< empty: it is gone
    std::string reserve;                   ///< what stood there before; empty: nothing is kept
    bool hadNoFile = false;                ///< there was no such file before
    std::vector<ExplainedRegion> regions;  ///< every line is in one of them
};

/// Where the file and its lines come from. Nothing is written.
ZET_API Explanation Explain(Product& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
