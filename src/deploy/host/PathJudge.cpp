#include "deploy/host/PathJudge.h"

#include <pwd.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "deploy/host/OpenDirectory.h"
#include "deploy/host/Words.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

bool IsSticky(const struct stat& status) {
    return (status.st_mode & S_ISVTX) != 0;
}

std::string WayOut(uid_t user, const std::string& toOwn) {
    return Words("run the command as that user: sudo -u %s ..., or let root own %s", WordOfUser(user), toOwn);
}

}  // namespace

PathJudge::PathJudge(std::vector<uid_t> harmless) : m_harmless(std::move(harmless)) {
    m_harmless.insert(m_harmless.end(), {0, geteuid()});
}

bool PathJudge::IsHarmless(uid_t user) const {
    return std::find(m_harmless.begin(), m_harmless.end(), user) != m_harmless.end();
}

void PathJudge::Object(const std::string& file, const std::string& text, const std::string& remedy) {
    if (!m_objection) m_objection = Problem{file, 0, 0, text, remedy};
}

void PathJudge::Step(const Directory& from, const std::string& entryName, const struct stat* entry,
                     bool isLast) {
    RequireClosed(from, entryName, isLast);
    // In a sticky directory nobody can touch another user's entries: each counts as if its owner owned the
    // directory.
    const bool isEntrys = from.hasOtherWriters && IsSticky(from.status) && entry != nullptr;
    Follow(isEntrys ? entry->st_uid : from.status.st_uid, from);
    if (m_holder) RequireHoldersEntry(from, entryName, entry, isLast);
    if (m_holder && entry != nullptr && S_ISLNK(entry->st_mode)) m_link = PathIn(from.name, entryName);
}

void PathJudge::RequireClosed(const Directory& directory, const std::string& entryName, bool isLast) {
    if (!directory.hasOtherWriters || (!isLast && IsSticky(directory.status))) return;
    const bool isEverybody = (directory.status.st_mode & S_IWOTH) != 0;
    const std::string entry = PathIn(directory.name, entryName);
    Object(directory.name,
           isEverybody ? Words("others may write the directory of %s", entry)
                       : Words("a group or others may write the directory of %s", entry),
           RemedyOfOpen(directory.status));
}

void PathJudge::Follow(uid_t owner, const Directory& from) {
    if (m_holder && owner != *m_holder) {
        Object(m_link.empty() ? from.name : m_link,
               m_link.empty() ? Words("is where %s leads to, who does not own it", NameOfUser(*m_holder))
                              : Words("is a link of %s that leads to %s, which belongs to %s",
                                      NameOfUser(*m_holder), from.name, NameOfUser(owner)),
               WayOut(*m_holder, _("all directories and links on the way")));
    } else if (!m_holder && !IsHarmless(owner)) {
        m_holder = owner;
    }
}

void PathJudge::RequireHoldersEntry(const Directory& from, const std::string& entryName,
                                    const struct stat* entry, bool isLast) {
    const std::string path = PathIn(from.name, entryName);
    if (entry == nullptr) {
        Object(path, Words("would be a file of root's in a directory of %s", NameOfUser(*m_holder)),
               WayOut(*m_holder, from.name));
    } else if (entry->st_uid != *m_holder) {
        Object(path,
               Words("is in a directory of %s, but belongs to %s", NameOfUser(*m_holder),
                     NameOfUser(entry->st_uid)),
               WayOut(*m_holder, from.name));
    } else if (isLast && S_ISREG(entry->st_mode) && entry->st_nlink != 1) {
        Object(path, Words("is in a directory of %s and has other names (hard links)", NameOfUser(*m_holder)),
               WayOut(*m_holder, from.name));
    }
}

std::optional<Problem> PathJudge::ObjectionToOwn(const std::string& path) const {
    if (m_objection || !m_holder) return m_objection;
    return Problem{path, 0, 0,
                   Words("is in a directory of %s, so root does not use it", NameOfUser(*m_holder)),
                   _("let root own all directories and links on the way")};
}

std::optional<Problem> PathJudge::ObjectionToRead(const std::string& path, const struct stat& status) const {
    const std::optional<Problem> ofWay = ObjectionToOwn(path);
    if (ofWay || (IsHarmless(status.st_uid) && !HasOtherWriters(path, status))) return ofWay;
    return Problem{path, 0, 0, _("others may write it, so root does not use it"),
                   IsShared(status) ? RemedyOfOpen(status) : _("chown root and chmod go-w")};
}

bool HasOtherWriters(const std::string& path, const struct stat& status) {
    if ((status.st_mode & S_IWOTH) != 0) return true;
    if ((status.st_mode & S_IWGRP) == 0) return false;
    // With an access control list, these bits are its mask, and somebody named in the list may write.
    return status.st_gid != 0 || getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

std::string WordOfUser(uid_t user) {
    const struct passwd* entry = getpwuid(user);
    return entry != nullptr ? entry->pw_name : "'#" + std::to_string(user) + "'";
}

std::string NameOfUser(uid_t user) {
    const struct passwd* entry = getpwuid(user);
    return entry != nullptr ? entry->pw_name : Words("user %s", std::to_string(user));
}

}  // namespace ZET::Deploy
