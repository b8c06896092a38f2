#ifndef ZET_STAGING_H
#define ZET_STAGING_H

#include <string>

namespace ZET {

/// A private directory (mode 0700) for files on their way, removed with all it holds when the object ends.
/// As long as the object lives, the directory is locked, which tells it from one that a killed run left.
class Staging {
  public:
    /// "PARENT/zet-staging.XXXXXX"; an empty `parent` is the directory for temporary files. A directory that
    /// cannot be made is a `Failure`.
    explicit Staging(const std::string& parent = "");
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// The path of a file in it; the directories that `name` has are made. No name leads out of it.
    std::string PathOf(const std::string& name) const;

    /// Removes the directories in `parent` that this user's killed runs left. What cannot be removed stays.
    static void RemoveLeftOvers(const std::string& parent = "");

  private:
    std::string m_directory;
    int m_lock = -1;
};

}  // namespace ZET

#endif
