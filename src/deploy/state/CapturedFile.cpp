#include "deploy/state/CapturedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Host.h"
#include "deploy/state/store/Digest.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"
#include "posix/ReadWrite.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kBlockToDigest = std::size_t{32} << 10;  ///< fits into the processor's cache

/// An attribute that holds for these bytes alone is not kept: whoever vouches for the bytes makes it anew.
bool IsAttributeKept(std::string_view name) {
    return name == "system.posix_acl_access" || name == "security.selinux" || name.starts_with("user.");
}

/// Empty if the file system knows no attributes.
std::string AttributeNames(int descriptor, const std::string& path) {
    std::string names(1024, '\0');
    for (;;) {
        const ssize_t length = flistxattr(descriptor, names.data(), names.size());
        if (length >= 0) return names.substr(0, static_cast<std::size_t>(length));
        if (errno == ENOTSUP || errno == ENOSYS) return "";
        if (errno != ERANGE) FailOfCall(path, _("its attributes cannot be read"));
        names.resize(names.size() * 4);
    }
}

std::string AttributeOf(int descriptor, const std::string& name, const std::string& path) {
    std::string value(256, '\0');
    for (;;) {
        const ssize_t length = fgetxattr(descriptor, name.c_str(), value.data(), value.size());
        if (length >= 0) return value.substr(0, static_cast<std::size_t>(length));
        if (errno != ERANGE) FailOfCall(path, _("its attributes cannot be read"));
        value.resize(value.size() * 4);
    }
}

/// Returns an empty descriptor if there is no such file.
Descriptor Open(int directory, const std::string& name, const std::string& path) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(openat(directory, name.c_str(), kFlags));
    if (file < 0 && errno == ELOOP)
        throw Failure({.file = path, .text = _("is a link now"), .remedy = _("look at it, and try again")});
    if (file < 0 && errno != ENOENT) FailOfCall(path, _("cannot be read"));
    return file;
}

/// Everything but the attributes.
RecordedState StateWithoutAttributes(int descriptor, const std::string& path) {
    const struct stat status = StatusOfOpened(descriptor, path);
    if (!S_ISREG(status.st_mode))
        throw Failure({.file = path, .text = _("is no regular file"), .remedy = _("name a regular file")});
    RecordedState state;
    state.exists = true;
    state.mode = status.st_mode & kModeBits;
    state.owner = status.st_uid;
    state.group = status.st_gid;
    state.size = static_cast<std::uint64_t>(status.st_size);
    return state;
}

RecordedState StateOfOpened(int descriptor, const std::string& path) {
    RecordedState state = StateWithoutAttributes(descriptor, path);
    state.attributes = AttributesOf(descriptor, path);
    return state;
}

/// Reads as much as the file reports to have, or to its end if it reports nothing. Of a text that grows too
/// long, only the digest is left.
void ReadText(int descriptor, const std::string& path, std::uint64_t longest, CapturedFile& captured) {
    DigestInProgress digest;
    char block[kBlockToDigest];
    const std::uint64_t told = captured.state.size;
    std::uint64_t size = 0;
    if (captured.state.size <= longest) captured.text.reserve(captured.state.size);
    while (told == 0 || size < told) {
        const ssize_t count = ReadSome(descriptor, block, sizeof block);
        if (count < 0) FailOfCall(path, _("cannot be read"));
        if (count == 0) break;
        const std::string_view bytes(block, static_cast<std::size_t>(count));
        digest.Add(bytes);
        size += bytes.size();
        if (size <= longest) captured.text.append(bytes);
    }
    if (size > longest) captured.text = "";
    captured.state.size = size;
    captured.state.digest = digest.Bytes();
}

/// `path` is for messages.
CapturedFile CaptureAt(int directory, const std::string& name, const std::string& path,
                       std::uint64_t longest) {
    CapturedFile captured;
    const Descriptor file = Open(directory, name, path);
    if (file < 0) return captured;
    captured.state = StateOfOpened(file, path);
    ReadText(file, path, longest, captured);
    return captured;
}

RecordedState CaptureWithoutTextAt(int directory, const std::string& name, const std::string& path) {
    const Descriptor file = Open(directory, name, path);
    return file < 0 ? RecordedState() : StateOfOpened(file, path);
}

}  // namespace

std::map<std::string, std::string> AttributesOf(int descriptor, const std::string& path) {
    std::map<std::string, std::string> attributes;
    const std::string names = AttributeNames(descriptor, path);
    for (std::size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
        const std::string name = names.c_str() + start;
        if (IsAttributeKept(name)) attributes.emplace(name, AttributeOf(descriptor, name, path));
    }
    return attributes;
}

void CapturedFile::SetText(const std::string& other) {
    text = other;
    state.size = other.size();
    state.digest = DigestOf(other);
}

CapturedFile Capture(const std::string& path, std::uint64_t longest) {
    return CaptureAt(AT_FDCWD, path, path, longest);
}

CapturedFile Capture(Host& host, const std::string& path) {
    return Capture(path, host.HostHistory().Limits().largestText);
}

CapturedFile CaptureIn(const FileInPlace& place, const std::string& suffix, std::uint64_t longest) {
    return CaptureAt(place.Directory(), place.NameInDirectory() + suffix, place.Path() + suffix, longest);
}

CapturedFile CapturedOf(const FileState& rights, const std::string& text, std::uint64_t longest) {
    CapturedFile captured;
    captured.SetText(text);
    if (text.size() > longest) captured.text.clear();
    captured.state.exists = true;
    captured.state.mode = rights.mode & kModeBits;
    captured.state.owner = rights.owner;
    captured.state.group = rights.group;
    return captured;
}

/// A size of one byte with the digest of the empty text is that of no file.
CapturedFile CapturedWithoutText(const FileState& now) {
    CapturedFile captured = CapturedOf(now, "", 0);
    captured.state.size = 1;
    return captured;
}

bool HasRecordedText(const std::string& path, const RecordedState& state) {
    const Descriptor file = Open(AT_FDCWD, path, path);
    CapturedFile captured;
    if (file >= 0) {
        captured.state = StateWithoutAttributes(file, path);
        if (captured.state.size > 0 && captured.state.size != state.size) return false;
        ReadText(file, path, 0, captured);
    }
    return HaveSameText(captured.state, state);
}

bool IsRecordedText(std::string_view text, const RecordedState& state) {
    return state.exists && text.size() == state.size && DigestOf(text) == state.digest;
}

RecordedState CaptureWithoutText(const std::string& path) {
    return CaptureWithoutTextAt(AT_FDCWD, path, path);
}

RecordedState CaptureWithoutTextIn(const FileInPlace& place, const std::string& suffix) {
    return CaptureWithoutTextAt(place.Directory(), place.NameInDirectory() + suffix, place.Path() + suffix);
}

FileState StateOfRecorded(const RecordedState& recorded) {
    FileState state;
    state.exists = recorded.exists;
    if (!state.exists) return state;
    state.mode = S_IFREG | recorded.mode;
    state.owner = recorded.owner;
    state.group = recorded.group;
    state.links = 1;
    return state;
}

}  // namespace ZET::Deploy
