#ifndef ZET_REPLACEMENT_H
#define ZET_REPLACEMENT_H

#include <functional>
#include <string>

namespace ZET {

/// Thrown by a judge to leave the file as it is.
struct LeftAsItIs {};

/// For as long as the object lives, what the module made of a file is judged before it takes the file's
/// place: the last moment at which nothing has happened yet. An exception of the judge keeps the file as it
/// is, and what was made is removed.
class Replacement {
  public:
    /// `made` is the finished file, with the mode that it is going to have.
    using Judge = std::function<void(const std::string& made)>;

    Replacement(const std::string& path, const Judge& judge);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
};

}  // namespace ZET

#endif
