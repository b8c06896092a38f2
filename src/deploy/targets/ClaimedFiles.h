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

/// Which files have a use already, so that nothing else may be written to them: at first the product's own,
/// then those of every template and target that is added. Whatever way leads to a file, it is the same one.
class ClaimedFiles {
  public:
    explicit ClaimedFiles(Host& host);

    /// The template, and its working copy.
    void AddTemplate(const std::string& name);

    /// A problem when one of the template's files had another use when it was added.
    std::optional<Problem> ClashOf(const std::string& templateName) const;

    /// The templates of the product's role, and its targets except those of `notYet`.
    void AddListed(const std::vector<Target>& listed, const std::vector<Target>& notYet = {});

    /// The same, of which only what matters for a file of this path has to be looked at.
    void AddListedBeside(const std::string& path, const std::vector<Target>& listed);

    /// The target with what stands beside it: its reserve and the like. A problem when one of them is a file
    /// that has another use, or its template's.
    std::optional<Problem> AddTarget(const Target& target);

    /// The same of one whose file was found: `file` is its one name.
    std::optional<Problem> AddTarget(const Target& target, const std::string& file);

    /// What the file is for: "the reserve of /etc/x". Empty when it is for nothing yet, or a target itself.
    std::string UseBesideTargets(const std::string& path) const;

  private:
    /// What is told of it is put together when somebody asks, which was a fifteenth of the instructions of a
    /// commit that changes nothing.
    struct Use {
        const char* text;            ///< not translated yet
        std::string templateName{};  ///< of what the file is made from; empty: it is no target
        std::string ofTemplate{};    ///< the template whose file it is; empty: it is none's
        std::size_t suffixSize = 0;  ///< of a companion: what its name has more than that of its file

        std::string TextOf(const std::string& path) const;
    };
    using Uses = std::unordered_map<std::string, Use>;

    /// The names of a directory; that of a plain file leads nowhere else.
    struct Listing {
        std::string path;  ///< the one name of the directory
        bool isListed = false;
        std::set<std::string, std::less<>> notPlain;
    };

    /// One whose files the product reads, those that end so.
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
    std::map<std::string, Listing, std::less<>> m_listings;  ///< by the directories of many files
    std::map<std::string, std::string> m_ownDirectories;     ///< their one names, by those given
    std::string m_shippedDirectory;
    std::vector<ReadDirectory> m_readDirectories;  ///< once they are asked for, as the one before
    Uses m_uses;                                   ///< by the files' canonical names
    std::map<std::string, Problem> m_clashes;      ///< by the templates' names
};

}  // namespace ZET::Deploy

#endif
