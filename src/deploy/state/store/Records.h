#ifndef ZET_STORE_RECORDS_H
#define ZET_STORE_RECORDS_H

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "zet/deploy/Role.h"

namespace ZET::Deploy {

/// A text that the store keeps; equal texts are kept once.
struct TextNumber {
    std::int64_t value = 0;
    bool operator==(const TextNumber&) const = default;
};

/// What the product has to do with a file at an instant.
struct Knowledge {
    std::set<Role> roles;            ///< those that have committed it
    std::optional<Role> namedRole;   ///< the one whose command the file's notice names
    std::string templateName;        ///< of a target
    std::optional<TextNumber> base;  ///< what its text was made from, if that is another text
    bool isBaseErased = false;       ///< there was one, but it was taken out of the history

    bool IsCommitted() const { return !roles.empty(); }

    /// For a target: whether its text is more than its rendering.
    bool IsMerge() const { return base || isBaseErased; }

    void ForgetBase() {
        base.reset();
        isBaseErased = false;
    }

    bool operator==(const Knowledge&) const = default;
};

/// A file at an instant.
struct RecordedState {
    bool exists = false;
    mode_t mode = 0;  ///< permissions, and the bits beside them
    uid_t owner = 0;
    gid_t group = 0;
    std::map<std::string, std::string> attributes;  ///< the ACL, the label and what else the file carries
    std::uint64_t size = 0;
    std::string digest;              ///< of the text
    std::optional<TextNumber> text;  ///< none if it is not kept
    Knowledge knowledge;

    bool operator==(const RecordedState&) const = default;
};

/// Whether two states have the same text, as far as can be told.
inline bool HaveSameText(const RecordedState& one, const RecordedState& other) {
    return one.exists == other.exists && one.size == other.size && one.digest == other.digest;
}

/// The same, and the same mode: to change only the mode is an edit, too.
inline bool HaveSameTextAndMode(const RecordedState& one, const RecordedState& other) {
    return HaveSameText(one, other) && (!one.exists || one.mode == other.mode);
}

/// Whether it is the same file to its readers: bytes, mode, owner and attributes.
inline bool IsSameFile(const RecordedState& one, const RecordedState& other) {
    if (one.exists != other.exists) return false;
    if (!one.exists) return true;
    return HaveSameTextAndMode(one, other) && one.owner == other.owner && one.group == other.group &&
           one.attributes == other.attributes;
}

/// What the product has to do with a file.
enum class FileKind {
    Target,
    Edit,
    Template,  ///< a working copy
    Option,    ///< the main file
    Companion,
    Status,
    Rendering,  ///< of a template, but no target
    Original    ///< nothing any more: it is as it was before
};

/// What an entry did to a file.
struct RecordedFile {
    std::string path;  ///< of the real file, as the host itself knows it
    FileKind kind = FileKind::Edit;
    FileKind kindBefore = FileKind::Original;  ///< what it was known to be before the entry
    RecordedState before;
    RecordedState after;
    std::optional<RecordedState> knownAsBefore;  ///< what it was known as, if that was another text
    bool wasEdited = false;                      ///< what stood there before was somebody else's work
    bool isPutBack = false;                      ///< a former state came back, whoever wrote it
    bool staysKnown = false;  ///< known as before, since what comes into it is somebody else's work

    const RecordedState& KnownBefore() const { return knownAsBefore ? *knownAsBefore : before; }

    /// Whether it was known what the file was going to be, before it was written.
    bool IsPlanned() const { return !after.exists || !after.digest.empty(); }
};

/// What is to be recorded of a file, together with its texts.
struct FileToRecord {
    RecordedFile file;
    std::string textBefore;
    std::string textAfter;
    std::optional<std::string> base;       ///< the text that `after` is made from
    bool isPlanned = true;                 ///< false: `after` is not known yet
    std::optional<RecordedState> knownAs;  ///< what it is known as then, if somebody edited it since
    bool isKnownAnew = false;              ///< something else is known of it then, even if it stays as it is
    std::optional<RecordedFile> reserve;   ///< joins the entry with the file, whose former text it has
};

/// How the files of an entry turned out.
struct Settlement {
    std::vector<FileToRecord> changed;   ///< those that are not as was planned
    std::vector<std::string> untouched;  ///< those that the command did not write
    std::vector<std::string> unclear;    ///< those of which nobody can tell: they stay known as before
    std::vector<FileToRecord> known;     ///< those that are not known as what they are
    bool keepsEntry = true;              ///< false: records only what is known of the files now
};

enum class EntryOutcome { Open, Done, Failed, CutShort };

/// One command that wrote files.
struct RecordedEntry {
    std::int64_t number = 0;
    std::int64_t begun = 0;  ///< nanoseconds since 1970
    std::int64_t ended = 0;
    EntryOutcome outcome = EntryOutcome::Open;
    uid_t user = 0;
    std::optional<uid_t> loginUser;  ///< who logged in, whatever user the process became since
    std::string sudoUser;            ///< who asked sudo for the right; empty: nobody
    Role role = Role::Client;
    std::vector<std::string> words;  ///< of the command
    std::string message;             ///< the user's own; empty: none
};

/// What the product knows of a file.
struct KnownFile {
    std::string path;
    FileKind kind = FileKind::Edit;
    RecordedState state;     ///< as the product left it
    std::int64_t entry = 0;  ///< the last one that wrote it

    /// Whether it is a target whose text is more than its rendering.
    bool HoldsMerge() const { return kind == FileKind::Target && state.knowledge.IsMerge(); }
};

/// The role whose command the file's notice names; `own` if no role has committed the file.
inline Role NamedRoleOf(const KnownFile* known, Role own) {
    const bool isCommitted = known != nullptr && known->state.knowledge.IsCommitted();
    return isCommitted ? known->state.knowledge.namedRole.value_or(own) : own;
}

/// The role whose command a new rendering names: the former one, as long as that role has the file, or
/// somebody's edit is merged with a text that names it.
inline Role RoleToName(const KnownFile* known, Role own) {
    const Role named = NamedRoleOf(known, own);
    const bool stays =
        known == nullptr || known->HoldsMerge() || known->state.knowledge.roles.contains(named);
    return stays ? named : own;
}

}  // namespace ZET::Deploy

#endif
