#ifndef ZET_WRITES_H
#define ZET_WRITES_H

#include <string>
#include <unordered_set>

namespace ZET::Deploy {

/// To be called right before a file gets its new text, or goes. What is found there afterwards may have taken
/// the place of the command's own work.
void IsAboutToWrite(const std::string& path);

/// The files that this thread came to write since the object was made.
class Writes {
  public:
    Writes();
    ~Writes();
    Writes(const Writes&) = delete;
    Writes& operator=(const Writes&) = delete;

    bool MayHold(const std::string& path) const { return m_paths.contains(path); }

  private:
    friend void IsAboutToWrite(const std::string& path);

    std::unordered_set<std::string> m_paths;
    Writes* m_outer;
};

}  // namespace ZET::Deploy

#endif
