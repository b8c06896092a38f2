#ifndef ZET_SECRET_TEXTS_H
#define ZET_SECRET_TEXTS_H

#include <sys/types.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ZET::Deploy {

/// Files whose texts are secret, by which a copy of one is known under any name. Of many such files, each is
/// looked at once, and read once where the text of another one of its size is asked for.
class SecretTexts {
  public:
    /// What is no regular file has none.
    void Add(const std::string& file);

    /// Whether the name is that of one of them, or of a file with the same bytes.
    bool HasTextOf(const std::string& file);

  private:
    struct OfSize {
        std::vector<std::string> unread;
        std::multimap<std::string, std::string> byDigest;
    };

    static void Read(OfSize& files);

    std::set<std::pair<dev_t, ino_t>> m_files;
    std::map<off_t, OfSize> m_bySize;  ///< without those that are empty
};

}  // namespace ZET::Deploy

#endif
