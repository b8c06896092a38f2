"""Scenarios on hosts whose files are linked, shared, set-user-ID, in a tree of their own or of both roles."""

import os

from host import OTHER_OWNER, access_list, write
from scenarios import ROLLBACK, scenario

PROGRAM = "files/program.conf"
RESTORE_PROGRAM = ("file", "restore", "HOST/" + PROGRAM)
ACCESS = "system.posix_acl_access"
IN_TREE = ("--root", "HOST/tree", "--config", "/zet.conf")


def require(condition, text):
    return [] if condition else [text]


def content(state, path):
    return state[path].content if path in state else None


def nothing(host, run):
    pass


# --- links ---

def link_target(host):
    os.makedirs(host.path("files/real"))
    os.rename(host.path("files/old.conf"), host.path("files/real/old.conf"))
    os.symlink("real/old.conf", host.path("files/old.conf"))


def target_stays_link(old, new):
    found = require(new.get("files/old.conf") == old["files/old.conf"], "the link files/old.conf did not stay")
    return found + require(content(new, "files/real/old.conf") != content(old, "files/real/old.conf"),
                           "the file behind the link is as it was")


scenario("commit-linked-target", "zet-init", "commit-config", "old.conf", undo=ROLLBACK,
         furnish=link_target, expect=target_stays_link)(nothing)


def link_directory(host):
    os.rename(host.path("files"), host.path("really"))
    os.symlink(host.path("really"), host.path("files"))


def directory_stays_link(old, new):
    return require(new.get("files") == old["files"], "the link files did not stay")


scenario("commit-linked-directory", "zet-init", "commit-config", "old.conf", undo=ROLLBACK,
         furnish=link_directory, expect=directory_stays_link)(nothing)
scenario("param-set-linked-directory", "zet-init", "param", "set", "HOST/files/plain.conf", "size", "4",
         undo=("file", "restore", "HOST/files/plain.conf"), furnish=link_directory,
         expect=directory_stays_link)(nothing)


def give_second_name(host):
    os.link(host.path("files/plain.conf"), host.path("files/plain.other-name"))


def other_name_keeps_text(old, new):
    return require(content(new, "files/plain.other-name") == content(old, "files/plain.other-name"),
                   "the text changed under the other name too")


scenario("param-set-hard-linked", "zet-init", "param", "set", "HOST/files/plain.conf", "size", "4",
         furnish=give_second_name, expect=other_name_keeps_text)(nothing)


# --- owners, modes, access lists ---

def program_of(mode):
    """A file of another user, which runs with his rights."""
    return lambda host: write(host.path(PROGRAM), "size=3\n", mode, OTHER_OWNER)


def program_keeps_rights(old, new):
    return require(new[PROGRAM][:4] == old[PROGRAM][:4],
                   f"{PROGRAM} is {new[PROGRAM].mode:04o} of {new[PROGRAM].owner}:{new[PROGRAM].group}")


for name, rights in (("set-user", 0o4755), ("set-group", 0o2755)):
    scenario(f"param-set-{name}", "zet-init", "param", "set", "--no-markers", "HOST/" + PROGRAM, "size", "4",
             undo=RESTORE_PROGRAM, furnish=program_of(rights), expect=program_keeps_rights)(nothing)

scenario("file-reserve-set-user", "zet-init", "file", "reserve", "HOST/" + PROGRAM, furnish=program_of(0o4755),
         expect=program_keeps_rights)(nothing)


@scenario("file-restore-set-user", "zet-init", *RESTORE_PROGRAM, furnish=program_of(0o6755),
          expect=program_keeps_rights)
def set_parameter_of_program(host, run):
    run("zet-init", "param", "set", "HOST/" + PROGRAM, "size", "4")


scenario("template-process-set-user", "zet-init", "template", "process", "new.conf", "HOST/" + PROGRAM,
         undo=RESTORE_PROGRAM, furnish=program_of(0o6755))(nothing)


def let_another_user_read(host):
    path = host.path("files/plain.conf")
    write(path, "size=3\n", 0o640)
    os.setxattr(path, ACCESS, access_list(OTHER_OWNER + 1))


def access_list_stays(old, new):
    lists = [dict(state["files/plain.conf"].attributes).get(ACCESS) for state in (old, new)]
    return require(lists[0] is not None and lists[0] == lists[1], "the access list is another one")


scenario("param-set-access-list", "zet-init", "param", "set", "HOST/files/plain.conf", "size", "4",
         undo=("file", "restore", "HOST/files/plain.conf"), furnish=let_another_user_read,
         expect=access_list_stays)(nothing)


def keep_password(host):
    host.configure("example.org", more="LDAP_PASSWORD=not-for-others\n")
    os.chmod(host.path("zet.conf"), 0o600)


scenario("commit-with-password", "zet-init", "commit-config", "old.conf", undo=ROLLBACK,
         furnish=keep_password)(nothing)


# --- a tree of its own ---

def make_tree_with_links(host):
    """In it, links name files by names that mean others outside."""
    host.make_tree("tree", "")
    inside = host.path("tree") + host.path("files/")
    os.makedirs(inside)
    for name in ("old.conf", "plain.conf"):
        os.rename(host.path(f"tree/files/{name}"), inside + name)
        os.symlink(host.path(f"files/{name}"), host.path(f"tree/files/{name}"))


def make_tree_with_linked_directory(host):
    host.make_tree("tree", "")
    os.makedirs(os.path.dirname(host.path("tree") + host.path("files")))
    os.rename(host.path("tree/files"), host.path("tree") + host.path("files"))
    os.symlink(host.path("files"), host.path("tree/files"))


def only_tree_changes(old, new):
    return [f"{path} is outside of the tree, and changed" for path in sorted(old.keys() | new.keys())
            if not path.startswith("tree/") and old.get(path) != new.get(path)]


scenario("commit-in-tree", "zet-init", "commit-config", "old.conf", undo=ROLLBACK, options=IN_TREE,
         furnish=make_tree_with_links, expect=only_tree_changes)(nothing)
scenario("param-set-in-tree", "zet-init", "param", "set", "/files/plain.conf", "size", "4", options=IN_TREE,
         undo=("file", "restore", "/files/plain.conf"), furnish=make_tree_with_linked_directory,
         expect=only_tree_changes)(nothing)


# --- both roles ---

def shared_target_stays(old, new):
    """The server's notice or the client's, but rendered, and with the first original beside it."""
    texts = [content(state, "files/old.conf").replace(b"zet-client", b"zet-init") for state in (old, new)]
    found = require(texts[0] == texts[1], "files/old.conf was taken from the role that stays")
    return found + require(new.get("files/old.conf.before_zet") == old["files/old.conf.before_zet"],
                           "the original of files/old.conf is another one")


@scenario("rollback-of-one-role", "zet-client", "rollback-config", furnish=lambda host: None,
          expect=shared_target_stays)
def commit_both_roles(host, run):
    run("zet-init", "commit-config")
    run("zet-client", "commit-config")


@scenario("commit-second-role", "zet-client", "commit-config", furnish=lambda host: None,
          expect=shared_target_stays)
def commit_first_role(host, run):
    run("zet-init", "commit-config")
