#ifndef ZET_FAST_IMPORT_H
#define ZET_FAST_IMPORT_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Writes a stream for "git fast-import": one branch, whose changes follow each other.
class FastImport {
  public:
    struct Signature {
        std::string name;
        std::string address;
        std::int64_t seconds = 0;  ///< since 1970
    };

    /// `End` must be called last: the reader refuses a stream without it.
    FastImport(std::ostream& stream, std::string branch);

    void Change(const Signature& author, const Signature& committer, const std::string& message);

    /// Writes a file in the change that was begun last. Paths are relative, and may hold any bytes.
    void Write(const std::string& path, bool isExecutable, std::string_view text);
    void Remove(const std::string& path);

    void End();

  private:
    void Data(std::string_view bytes);

    std::ostream& m_stream;
    std::string m_branch;
};

/// A path as the stream has it: in quotes unless all of its bytes are plain. A step that is called like a
/// repository's own directory gets another name.
std::string PathInStream(const std::string& path);

}  // namespace ZET::Deploy

#endif
