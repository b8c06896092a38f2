#ifndef ZET_CLAIMED_FILES_H
#define ZET_CLAIMED_FILES_H

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/state/Host.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Knows which files have a use already, so that nothing else is written to them: first the product's own,
/// then those of every template and target that is added. It does not matter which path leads to a file.
class ClaimedFiles {
  public:
    explicit ClaimedFiles(Host& host);

    /// Adds the template and its working copy.
    void AddTemplate(const std::string& name);

    /// The problem, if one of the template's files had another use when it was added.
    std::optional<Problem> ClashOf(const std::string& templateName) const;

    /// Adds the templates of the product's role, and its targets except those of `notYet`.
    void AddListed(const std::vector<Target>& listed, const std::vector<Target>& notYet = {});

    /// Adds the targets that only the other role has. They matter where it has committed on this host: each
    /// role would overwrite what the other wrote.
    void AddTargetsOfOtherRole(const std::vector<Target>& listed);

    /// As `AddListed`, but only as far as it matters for a file of this path.
    void AddListedBeside(const std::string& path, const std::vector<Target>& listed);

    /// Adds the target and its companions, like its reserve. Returns a problem if one of them, or a file of
    /// its template, has another use.
    std::optional<Problem> AddTarget(const Target& target);

    /// The same for a target whose file was found: `file` is its one name.
    std::optional<Problem> AddTarget(const Target& target, const std::string& file);

    /// What the file is for: "the reserve of /etc/x". Empty if it has no use yet, or is a target itself.
    std::string UseBesideTargets(const std::string& path) const;

  private:
    /// Its text is made only when somebody asks for it. Making all took a fifteenth of the instructions of a
    /// commit that changes nothing.
    struct Use {
        const char* text;            ///< not translated yet
        std::string templateName{};  ///< that the file is made from; empty: it is no target
        std::string ofTemplate{};    ///< that the file belongs to; empty: to none
        std::size_t suffixSize = 0;  ///< of a companion: by how much its name is longer than its file's

        std::string TextOf(const std::string& path) const;
    };
    using Uses = std::unordered_map<std::string, Use>;

    /// A directory's names. The name of a plain file leads nowhere else.
    struct Listing {
        std::string path;  ///< the one name of the directory
        bool isListed = false;
        std::set<std::string, std::less<>> notPlain;
    };

    /// A directory in which the product reads the files with this suffix.
    struct ReadDirectory {
        std::string path;
        const char* suffix;
        const char* text;
    };

    std::string Canonical(const std::string& path) const;
    std::string CanonicalOfMany(const std::string& path);
    std::string CanonicalOfOwn(const std::string& path);
    Listing ListingOf(const std::string& directory) const;
    void AddOwn(const std::string& path, const char* text);
    void AddRead(const std::string& file);
    std::optional<Use> ReadAs(const std::string& file);
    const std::vector<ReadDirectory>& ReadDirectories();
    void AddOf(const std::string& templateName, const std::string& path, const char* text);
    std::optional<Problem> Claim(std::string path, Use use);

    Host& m_host;
    std::map<std::string, Listing, std::less<>> m_listings;  ///< by the names of directories with many files
    std::map<std::string, std::string> m_ownDirectories;     ///< the one name of each given name
    std::string m_shippedDirectory;
    std::vector<ReadDirectory> m_readDirectories;  ///< made when first needed, with `m_shippedDirectory`
    Uses m_uses;                                   ///< by the files' canonical names
    std::map<std::string, Problem> m_clashes;      ///< by the templates' names
};

}  // namespace ZET::Deploy

#endif
