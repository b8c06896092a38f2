#ifndef ZET_LISTED_LINES_CHECK_H
#define ZET_LISTED_LINES_CHECK_H

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/targets/ClaimedFiles.h"
#include "deploy/targets/LinesInPlace.h"
#include "deploy/targets/ListedLines.h"
#include "text/ManagedText.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Checks the files in which the lists ask for lines, one by one; holds what the checks have in common.
class ListedLinesCheck {
  public:
    ListedLinesCheck(Deployment& product, std::vector<Problem>& problems);

    /// Whether the lines can be set in the file; adds the problems if they cannot.
    bool IsSound(const FileWithLines& file);

  private:
    void CheckText(const FileWithLines& file);
    void CheckPlace(const FileWithLines& file);
    void CheckLines(const FileWithLines& file);
    void CheckPlaceOfLine(const FileWithLines& file, const LineToSet& line, const LineInPlace& place,
                          const LineToSet* owner);
    void CheckWhole(const Text::ManagedText& text, const LineToSet& line, const LineInPlace& place);
    void Add(const LineToSet& line, const std::string& text, const std::string& remedy);

    Deployment& m_product;
    std::vector<Problem>& m_problems;
    const std::set<std::string> m_cutShort;
    std::optional<ClaimedFiles> m_claimed;  ///< made for the first file
};

}  // namespace ZET::Deploy

#endif
