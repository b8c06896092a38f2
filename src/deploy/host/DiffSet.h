#ifndef ZET_DIFF_SET_H
#define ZET_DIFF_SET_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// Two files by their absolute paths; an empty one: it is not there.
struct FilePair {
    std::string oldFile;
    std::string newFile;
};

/// The unified diffs of many pairs of files, as they are when it is made: by one process, not one for each.
class DiffSet {
  public:
    explicit DiffSet(std::vector<FilePair> pairs);

    const FilePair& Files(std::size_t pair) const { return m_pairs[pair]; }

    /// As `UnifiedDiff` makes it of the pair.
    std::string Of(std::size_t pair, const std::string& shownPath) const;

  private:
    std::vector<FilePair> m_pairs;
    /// What comes after the labels. None where one process could not do it: then each pair is compared by
    /// itself, which tells what is in the way.
    std::optional<std::vector<std::string>> m_changes;
};

}  // namespace ZET::Deploy

#endif
