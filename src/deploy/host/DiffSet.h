#ifndef ZET_DIFF_SET_H
#define ZET_DIFF_SET_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// Two files by their absolute paths; an empty path stands for a file that does not exist.
struct FilePair {
    std::string oldFile;
    std::string newFile;
};

/// The unified diffs of many pairs of files. On construction, one process compares them all.
class DiffSet {
  public:
    explicit DiffSet(std::vector<FilePair> pairs);

    const FilePair& Files(std::size_t pair) const { return m_pairs[pair]; }

    /// The diff of the pair, as `UnifiedDiff` makes it.
    std::string Of(std::size_t pair, const std::string& shownPath) const;

  private:
    std::vector<FilePair> m_pairs;
    /// The diffs without their labels. None if there are fewer than two pairs, or one process could not
    /// compare them: then `Of` compares each pair by itself, and reports what is in the way.
    std::optional<std::vector<std::string>> m_changes;
};

}  // namespace ZET::Deploy

#endif
