#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "Attributes.h"
#include "Batch.h"
#include "Characters.h"
#include "Message.h"
#include "PathArgument.h"
#include "Sync.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"
#include "posix/ReadWrite.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET::Core {

namespace {

constexpr std::size_t kLetters = 6;
constexpr std::size_t kSuffixSize = sizeof ZETTemporarySuffix - 1;

/// Copies until `size` bytes, which the file reports as its size. False, with `errno`, on failure. The kernel
/// copies what it can; if it stops early (another file system, a file that does not report its size), the
/// rest is read and written.
bool CopyBytes(int from, int to, off_t size) {
    constexpr std::size_t kStep = std::size_t{1} << 30;
    off_t total = 0;
    ssize_t copied;
    while ((copied = ::copy_file_range(from, nullptr, to, nullptr, kStep, 0)) > 0) {
        total += copied;
        if (total == size) return true;
    }
    if (copied < 0 && (errno == ENOSPC || errno == EDQUOT)) return false;
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    // Usually nothing is left to read, so the buffer stays uninitialised and its memory untouched.
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBlock);
    while (true) {
        const ssize_t size = ReadSome(from, buffer.get(), kBlock);
        if (size < 0) return false;
        if (size == 0) return true;
        if (!WriteAll(to, {buffer.get(), static_cast<std::size_t>(size)})) return false;
    }
}

/// The name of a copy for `to` up to its random letters; a name that leaves no room for them is cut.
std::string CopyStem(const std::string& to) {
    constexpr std::size_t kLongest = NAME_MAX - 1 - kLetters - kSuffixSize;
    return PartBeforeName(to) + BaseNameOf(to).substr(0, kLongest) + ".";
}

bool IsLetterOrDigit(char c) {
    return IsLetter(c) || IsDigit(c);
}

/// A copy under a unique name, removed unless it gets its final name.
class Copy {
  public:
    Copy(const std::string& from, const std::string& to)
        : m_from(from), m_to(to), m_name(CopyStem(to) + std::string(kLetters, 'X') + ZETTemporarySuffix) {}
    ~Copy() {
        if (m_isThere) ::unlink(m_name.c_str());
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    void Make() {
        const AttributedFile source = OpenSource();
        AttributedFile copy(m_name);
        // Creates a new, private file and never follows a link.
        copy.descriptor.Reset(::mkostemps(m_name.data(), kSuffixSize, O_CLOEXEC));
        if (!copy.descriptor.IsOpen()) Refuse();
        m_isThere = true;
        if (!CopyBytes(source.descriptor.Number(), copy.descriptor.Number(), source.status.st_size)) Refuse();
        if (::fstat(copy.descriptor.Number(), &copy.status) != 0) Refuse();
        // A link's creator might want a copy of somebody else's program that keeps its rights.
        const mode_t mode = source.status.st_mode;
        TakeOverAttributes(source, copy, source.isLinked ? ModeAllowedBy(source, mode) : mode);
        m_descriptor = std::move(copy.descriptor);
    }

    /// Makes the copy durable before it gets the name.
    void Rename() {
        SyncFile(m_descriptor, m_name);
        if (!m_descriptor.Close()) Refuse();
        if (std::rename(m_name.c_str(), m_to.c_str()) != 0) Refuse();
        m_isThere = false;
    }

    /// Hands the copy over to the batch.
    void LeaveTo(Core::Batch& batch, int directory) {
        batch.Collect({std::move(m_descriptor), BaseNameOf(m_name), BaseNameOf(m_to)}, directory, m_to);
        m_isThere = false;
    }

  private:
    [[noreturn]] void Refuse(const ZETCause& cause, const std::string& reason) const {
        FailKnowing(cause, "Failed to copy file '%s' to '%s': %s.", m_from.c_str(), m_to.c_str(),
                    reason.c_str());
    }

    /// The reason is in `errno`.
    [[noreturn]] void Refuse() const { Refuse({.path = m_to, .errorNumber = errno}, Message("%m")); }

    [[noreturn]] void RefuseSource() const { Refuse({.path = m_from, .errorNumber = errno}, Message("%m")); }

    AttributedFile OpenSource() const {
        AttributedFile source(m_from);
        const bool isOpen = OpenToRead(source);
        if (!isOpen && IsDanglingLink(m_from))
            Refuse({.path = m_from},
                   Message("the former is a link that leads nowhere (remove it, or make what it names)"));
        if (!isOpen || ::fstat(source.descriptor.Number(), &source.status) != 0) RefuseSource();
        if (!S_ISREG(source.status.st_mode)) Refuse({.path = m_from}, Message("not a regular file"));
        return source;
    }

    const std::string& m_from;
    const std::string& m_to;
    std::string m_name;
    Descriptor m_descriptor;
    bool m_isThere = false;
};

}  // namespace

}  // namespace ZET::Core

namespace ZET {

bool IsCopyOf(const std::string& name, const std::string& to) {
    const std::string stem = Core::CopyStem(to);
    if (name.size() != stem.size() + Core::kLetters + Core::kSuffixSize) return false;
    const auto letters = name.begin() + static_cast<std::ptrdiff_t>(stem.size());
    return name.compare(0, stem.size(), stem) == 0 &&
           name.compare(name.size() - Core::kSuffixSize, Core::kSuffixSize, ZETTemporarySuffix) == 0 &&
           std::all_of(letters, letters + Core::kLetters, &Core::IsLetterOrDigit);
}

void CopyFile(const std::string& from, const std::string& to) {
    Core::RequirePath(from, "CopyFile");
    Core::RequirePath(to, "CopyFile");
    const Core::ParentDirectory directory(to);
    Core::Copy copy(from, to);
    copy.Make();
    Core::Batch* const batch = Core::Batch::Present();
    if (batch != nullptr && batch->IsCollecting() && directory.Opened().IsOpen())
        return copy.LeaveTo(*batch, directory.Opened().Number());
    copy.Rename();
    directory.Sync();
}

}  // namespace ZET
