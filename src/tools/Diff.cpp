#include "Diff.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "ExitStatus.h"
#include "FileBytes.h"
#include "Lines.h"
#include "Process.h"

namespace ZET {

namespace {

constexpr char kNoFile[] = "/dev/null";
constexpr mode_t kModeBits = 07777;

bool NeedsQuotes(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f || c == '"' || c == '\\';
}

/// A file name as `patch` reads it: one with unusual bytes in quotes, one with blanks ended by a tab.
std::string Label(const std::string& name) {
    if (std::none_of(name.begin(), name.end(), NeedsQuotes))
        return name.find(' ') == std::string::npos ? name : name + "\t";
    std::string quoted = "\"";
    for (const char c : name) {
        char octal[5] = {c, '\0'};
        if (NeedsQuotes(c)) std::snprintf(octal, sizeof octal, "\\%03o", static_cast<unsigned char>(c));
        quoted += octal;
    }
    return quoted + "\"";
}

std::string SideLabel(const std::string& side, const std::string& file, const std::string& shownPath) {
    if (file.empty()) return kNoFile;
    return Label(side + shownPath.substr(std::min(shownPath.find_first_not_of('/'), shownPath.size())));
}

std::string ModeText(const FileState& state) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(state.mode & kModeBits));
    return text;
}

std::string OwnerText(const FileState& state) {
    return std::to_string(state.owner) + ":" + std::to_string(state.group);
}

std::string Change(const char* name, const FileState& before, const FileState& after,
                   std::string (*text)(const FileState&)) {
    if (!before.exists) return std::string(name) + " " + text(after);
    if (text(before) == text(after)) return "";
    return std::string(name) + " " + text(before) + " -> " + text(after);
}

Value TextOrNull(const FileState& state, std::string (*text)(const FileState&)) {
    return state.exists ? Value(text(state)) : Value(nullptr);
}

/// What diff says of itself, without the texts that it may have begun to print.
std::string ComplaintsIn(const std::string& output) {
    std::string complaints;
    for (const TextLine& line : SplitLines(output)) {
        if (line.text.starts_with("diff: ")) complaints += std::string(line.text) + "\n";
    }
    return complaints;
}

}  // namespace

std::string UnifiedDiff(const std::string& oldFile, const std::string& newFile,
                        const std::string& shownPath) {
    // The messages of diff would be in the reader's language, and a patch is for everybody.
    const ProcessResult result =
        RunProcess({"diff", "-u", "-a", "--label", SideLabel("a/", oldFile, shownPath), "--label",
                    SideLabel("b/", newFile, shownPath), "--", oldFile.empty() ? kNoFile : oldFile,
                    newFile.empty() ? kNoFile : newFile},
                   {.environment = {"LC_ALL=C"}});
    if (result.status > 1) {
        throw Failure(shownPath + ": no diff can be made, as diff ends with status " +
                          std::to_string(result.status) + " (run the command again)",
                      ComplaintsIn(result.output));
    }
    return result.output;
}

bool FileState::IsRegular() const {
    return exists && S_ISREG(mode);
}

FileState StateOf(const std::string& path) {
    return StateIn(AT_FDCWD, path, path);
}

FileState StateIn(int directory, const std::string& name, const std::string& path) {
    FileState state;
    struct stat status = {};
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return state;
        throw Failure(path + ": cannot tell whether it exists: " + std::strerror(errno) +
                      " (run the command as a user who may search its directory)");
    }
    state.exists = true;
    state.mode = status.st_mode;
    state.owner = status.st_uid;
    state.group = status.st_gid;
    state.links = status.st_nlink;
    return state;
}

bool HaveSameModeAndBytes(const std::string& one, const std::string& other) {
    return StateOf(one).mode == StateOf(other).mode && HaveSameBytes(one, other);
}

std::string DescribeChange(const FileState& before, const FileState& after) {
    if (!after.exists) return "";
    std::string text = Change("mode", before, after, ModeText);
    const std::string owner = Change("owner", before, after, OwnerText);
    if (!text.empty() && !owner.empty()) text += ", ";
    return text + owner;
}

Fields ChangeFields(const FileState& before, const FileState& after) {
    return {{"mode_before", TextOrNull(before, ModeText)},
            {"mode_after", TextOrNull(after, ModeText)},
            {"owner_before", TextOrNull(before, OwnerText)},
            {"owner_after", TextOrNull(after, OwnerText)}};
}

}  // namespace ZET
