#include "ListTexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Target TargetOf(const std::string& lines) {
    const TargetList list = ReadTargetText("LIST", Entry(lines));
    EXPECT_THAT(ProblemsOf(Entry(lines)), IsEmpty());
    EXPECT_EQ(list.targets.size(), 1u);
    return list.targets.empty() ? Target() : list.targets.front();
}

constexpr char kOfSyntax[] = " (correct it: texts stand in quotes, each name and each key is there once)";

TEST(TargetListReader, EmptyListHasNoTarget) {
    for (const char* text : {"", "\n", "# a comment", "[templates]\n"}) {
        EXPECT_THAT(ProblemsOf(text), IsEmpty());
        EXPECT_THAT(ReadTargetText("LIST", text).targets, IsEmpty());
    }
}

TEST(TargetListReader, TargetsComeInTheOrderOfTheList) {
    const TargetList list = ReadTargetText("LIST", Entry("", "z") + Entry("", "a") + Entry("", "m"));
    ASSERT_EQ(list.targets.size(), 3u);
    EXPECT_EQ(list.targets[0].templateName, "z");
    EXPECT_EQ(list.targets[1].templateName, "a");
    EXPECT_EQ(list.targets[1].line, 5);
    EXPECT_EQ(list.targets[2].templateName, "m");
}

TEST(TargetListReader, EveryKeyIsTaken) {
    const Target target = TargetOf(
        "check = [\"sh\", \"-c\", \"a\\nb\", \"\", \"{}\"]\ncheck_timeout = 86400\n"
        "restart = [\"s\", \"t\"]\nsecret = true\ntrust = \"freerad\"");
    EXPECT_EQ(target.templateName, "one");
    EXPECT_EQ(target.path, "/etc/one");
    EXPECT_TRUE(target.IsFor(Role::Server) && target.IsFor(Role::Client));
    EXPECT_THAT(target.check, ElementsAre("sh", "-c", "a\nb", "", "{}"));
    EXPECT_EQ(target.checkTimeout.count(), 86400);
    EXPECT_THAT(target.RestartsFor(Role::Server), ElementsAre("s", "t"));
    EXPECT_THAT(target.RestartsFor(Role::Client), ElementsAre("s", "t"));
    EXPECT_TRUE(target.isSecret);
    EXPECT_EQ(target.trusted, "freerad");
}

TEST(TargetListReader, WhatIsNotGivenHasItsDefault) {
    const Target target = TargetOf("secret = false");
    EXPECT_THAT(target.check, IsEmpty());
    EXPECT_EQ(target.checkTimeout.count(), 60);
    EXPECT_THAT(target.RestartsFor(Role::Server), IsEmpty());
    EXPECT_FALSE(target.isSecret);
    EXPECT_EQ(target.trusted, "");
}

TEST(TargetListReader, ServicesMayDependOnTheRole) {
    for (const char* lines : {"restart = { server = [\"s\"], client = [\"c\"] }",
                              "restart.server = [\"s\"]\nrestart.client = [\"c\"]",
                              "[templates.one.restart]\nserver = [\"s\"]\nclient = [\"c\"]"}) {
        const Target target = TargetOf(lines);
        EXPECT_THAT(target.RestartsFor(Role::Server), ElementsAre("s")) << lines;
        EXPECT_THAT(target.RestartsFor(Role::Client), ElementsAre("c")) << lines;
    }
    EXPECT_THAT(TargetOf("restart = { client = [\"c\"] }").RestartsFor(Role::Server), IsEmpty());
}

TEST(TargetListReader, WhatNoServiceIsInChargeOfIsACommandAmongTheServices) {
    const Target target =
        TargetOf("reload = { server = [\"s\", [\"exportfs\", \"-ra\"]], client = [[\"c\", \"-c\"]] }");
    EXPECT_THAT(target.ServicesFor(Role::Server).reload, ElementsAre("s", "exportfs -ra"));
    EXPECT_THAT(target.ServicesFor(Role::Client).reload, ElementsAre("c -c"));
    EXPECT_THAT(
        ProblemsOf(Entry("reload = [[\"a b\", \"c\"], [\"d\"], [1, \"\", \"e\"], []]")),
        ElementsAre("LIST:4:11: \"a b\" is no word of a command (write each word in quotes of its own)",
                    "LIST:4:25: the command \"d\" could be a service (write [\"command\", \"d\"])",
                    "LIST:4:32: \"\" is no word of a command (write each word in quotes of its own)",
                    "LIST:4:33: reload holds a number (write each word in quotes)",
                    "LIST:4:46: reload is empty (fill it, or remove the line)"));
}

TEST(TargetListReader, CommandIsInTheWordsOfAShell) {
    EXPECT_THAT(TargetOf("reload = [[\"sh\", \"-c\", 'echo \"hi $x\"', '', \"it's\", \"a;b\"]]")
                    .ServicesFor(Role::Server)
                    .reload,
                ElementsAre("sh -c 'echo \"hi $x\"' '' 'it'\\''s' 'a;b'"));
    EXPECT_THAT(ProblemsOf(Entry("reload = [[\"sh\", \"a\\nb\"]]")),
                ElementsAre("LIST:4:11: reload holds a NUL byte or a line feed (take it out)"));
}

TEST(TargetListReader, OtherFormsOfTomlSayTheSame) {
    for (const char* text :
         {"templates.\"a.b\".target = '/x'\ntemplates.\"a.b\".roles = 'both'",
          "templates = { \"a.b\" = { target = \"/x\", roles = \"both\" } }",
          "[templates]\n'a.b' = { target = \"/x\", roles = \"both\" }",
          "\xEF\xBB\xBF[templates.\"a.b\"] # c\n target = \"/x\"\n\troles = \"\"\"both\"\"\""}) {
        const TargetList list = ReadTargetText("LIST", text);
        EXPECT_THAT(ProblemsOf(text), IsEmpty()) << text;
        ASSERT_EQ(list.targets.size(), 1u) << text;
        EXPECT_EQ(list.targets[0].templateName, "a.b");
        EXPECT_EQ(list.targets[0].path, "/x");
    }
}

TEST(TargetListReader, UnknownKeysAreTold) {
    const std::string known =
        " (use target, roles, when, check, check_timeout, restart, reload, secret, notice, trust, mode, "
        "owner or enabled)";
    EXPECT_THAT(ProblemsOf(Entry("  Target = 1\n\"\" = { a = 1 }\nwhence = \"A=b\"")),
                ElementsAre("LIST:4:3: unknown key \"Target\"" + known, "LIST:5:1: unknown key \"\"" + known,
                            "LIST:6:1: unknown key \"whence\"" + known));
    const std::string below = " (put what a template has below [templates.\"NAME\"])";
    EXPECT_THAT(
        ProblemsOf("target = \"/x\"\n[krb5.conf]\nroles = \"both\"\n[[edit]]\n"),
        ElementsAre("LIST:1:1: unknown key \"target\"" + below, "LIST:2:2: unknown key \"krb5\"" + below,
                    "LIST:4:3: unknown key \"edit\"" + below));
}

TEST(TargetListReader, NameWithADotHasToBeQuoted) {
    EXPECT_THAT(
        ProblemsOf(
            "[templates.krb5.conf]\ntarget = \"/x\"\n[templates.a.b.c]\n[templates]\nd.e.target = \"/x\"\n"),
        ElementsAre("LIST:1:17: the name of the template [krb5.conf] is not quoted "
                    "(write [templates.\"krb5.conf\"])",
                    "LIST:3:16: the name of the template [a.b.c] is not quoted (write [templates.\"a.b.c\"])",
                    "LIST:5:3: the name of the template [d.e] is not quoted (write [templates.\"d.e\"])"));
    EXPECT_THAT(ProblemsOf("[templates.one.conf]\nsecret = true\n" + Entry("secret = 1")),
                ElementsAre("LIST:1:16: the name of the template [one.conf] is not quoted "
                            "(write [templates.\"one.conf\"])",
                            "LIST:6:10: secret is a number (write true or false, without quotes)"));
}

TEST(TargetListReader, TemplatesAreTables) {
    EXPECT_THAT(ProblemsOf("templates = 1"),
                ElementsAre("LIST:1:1: templates is a number (write [templates.\"NAME\"])"));
    EXPECT_THAT(ProblemsOf("[[templates]]\n"),
                ElementsAre("LIST:1:3: templates is an array (write [templates.\"NAME\"])"));
    EXPECT_THAT(
        ProblemsOf("[templates]\ntarget = \"/x\"\n[[templates.\"a\"]]\n"),
        ElementsAre("LIST:2:1: template [target] is a text (write [templates.\"NAME\"] above its keys)",
                    "LIST:3:13: template [a] is an array (write [templates.\"NAME\"] above its keys)"));
}

TEST(TargetListReader, NameOfATemplateStaysBelowItsDirectory) {
    const std::string leaves = "] leaves the directory of the templates (name a template below it)";
    EXPECT_THAT(
        ProblemsOf(
            "[templates.\"/etc/x\"]\n[templates.\"../x\"]\n[templates.\"a/../../b\"]\n[templates.\"\"]\n"),
        ElementsAre("LIST:1:12: template [/etc/x" + leaves, "LIST:2:12: template [../x" + leaves,
                    "LIST:3:12: template [a/../../b" + leaves, "LIST:4:12: template [" + leaves));
}

TEST(TargetListReader, TemplateHasOneName) {
    EXPECT_THAT(ProblemsOf("[templates.\"./x\"]\n[templates.\"a//b/.\"]\n"),
                ElementsAre("LIST:1:12: template [./x] has parts that lead nowhere (write [templates.\"x\"])",
                            "LIST:2:12: template [a//b/.] has parts that lead nowhere (write "
                            "[templates.\"a/b\"])"));
}

TEST(TargetListReader, NoNameHoldsItsEnd) {
    EXPECT_THAT(ProblemsOf("[templates.\"a\\u0000b\"]\n"),
                ElementsAre("LIST:1:12: template [a" + std::string(1, '\0') +
                            "b] has a NUL byte or a line feed in its name (give it another name)"));
    EXPECT_THAT(ProblemsOf("[templates.\"a\"]\ntarget = \"/x\\u0000y\"\nroles = \"both\\n\"\n"
                           "trust = \"a\\nb\"\ncheck = [\"x\", \"y\\u0000\"]\n"),
                ElementsAre("LIST:2:10: target holds a NUL byte or a line feed (take it out)",
                            "LIST:3:9: roles holds a NUL byte or a line feed (take it out)",
                            "LIST:4:9: trust holds a NUL byte or a line feed (take it out)",
                            "LIST:5:15: check holds a NUL byte (take it out)"));
}

TEST(TargetListReader, TargetAndRolesAreRequired) {
    EXPECT_THAT(
        ProblemsOf("[templates.\"a\"]\n\n [templates.\"b\"]\nroles = \"server\"\n"),
        ElementsAre("LIST:1:12: template [a] has no target (add target = \"/PATH\")",
                    "LIST:1:12: template [a] has no roles (add roles = \"server\", \"client\" or \"both\")",
                    "LIST:3:13: template [b] has no target (add target = \"/PATH\")"));
}

TEST(TargetListReader, TargetIsAnAbsolutePathOfAFile) {
    const std::string remedy = "begin it with \"/\", and end it with the name of a file)";
    for (const std::string path : {"etc/x", "/etc/", "", "/"}) {
        EXPECT_THAT(
            ProblemsOf("[templates.\"a\"]\ntarget = \"" + path + "\"\nroles = \"both\"\n"),
            ElementsAre("LIST:2:10: target \"" + path + "\" is no absolute path of a file (" + remedy));
    }
    EXPECT_THAT(ProblemsOf("[templates.\"a\"]\ntarget = [\"/x\"]\nroles = \"both\"\n"),
                ElementsAre("LIST:2:10: target is an array (write a path in quotes; " + remedy));
}

TEST(TargetListReader, ValuesHaveTheirKind) {
    EXPECT_THAT(
        ProblemsOf("[templates.\"a\"]\ntarget = \"/x\"\nroles = \"all\"\nsecret = \"false\"\n"
                   "trust = \"\"\ncheck = \"true\"\ncheck_timeout = 1.5\nrestart = \"x\"\n"),
        ElementsAre("LIST:3:9: roles is \"all\" (write \"server\", \"client\" or \"both\")",
                    "LIST:4:10: secret is a text (write true or false, without quotes)",
                    "LIST:5:9: trust is empty (name a user, or remove the line)",
                    "LIST:6:9: check is a text (write an array of words, as [\"COMMAND\", \"{}\"])",
                    "LIST:7:17: check_timeout is a number (write a number of seconds from 1 to 86400)",
                    "LIST:8:11: restart is a text (write an array of services, or "
                    "{ server = [...], client = [...] })"));
    EXPECT_THAT(ProblemsOf("[templates.\"a\"]\ntarget = \"/x\"\nroles = [\"server\"]\ntrust = 07:32:00\n"
                           "check = []\nrestart = {}\n"),
                ElementsAre("LIST:3:9: roles is an array (write \"server\", \"client\" or \"both\")",
                            "LIST:4:9: trust is a date or a time (write the name of a user in quotes)",
                            "LIST:5:9: check is empty (fill it, or remove the line)",
                            "LIST:6:11: restart is empty (fill it, or remove the line)"));
}

TEST(TargetListReader, WordsAreTexts) {
    EXPECT_THAT(
        ProblemsOf(Entry(
            "check = [\"a\",\n  1, true, [\"b\"], { c = 1 }]\nrestart = { server = [2], other = [\"x\"] }")),
        ElementsAre("LIST:5:3: check holds a number (write each word in quotes)",
                    "LIST:5:6: check holds true or false (write each word in quotes)",
                    "LIST:5:12: check holds an array (write each word in quotes)",
                    "LIST:5:19: check holds a table (write each word in quotes)",
                    "LIST:6:23: server holds a number (write each word in quotes)",
                    "LIST:6:27: restart has no role \"other\" (use server and client)"));
    EXPECT_THAT(
        ProblemsOf(Entry("check = [\"\", \"{}\"]\nrestart = [\"a b\", \"\"]")),
        ElementsAre("LIST:4:9: check names no command (put its name first)",
                    "LIST:5:11: \"a b\" is no name of a service (write each service in quotes of its own)",
                    "LIST:5:11: \"\" is no name of a service (write each service in quotes of its own)"));
}

TEST(TargetListReader, CheckHasFromASecondToADay) {
    for (const std::string number : {"0", "-1", "86401", "9223372036854775807"}) {
        EXPECT_THAT(ProblemsOf(Entry("check_timeout = " + number)),
                    ElementsAre("LIST:4:17: check_timeout is " + number +
                                " (write a number of seconds from 1 to 86400)"));
    }
}

TEST(TargetListReader, WhatIsNotClearlyPublicIsSecret) {
    for (const char* lines : {"secret = \"false\"", "secret = 0", "secret = []"})
        EXPECT_TRUE(ReadTargetText("LIST", Entry(lines)).targets.front().isSecret) << lines;
}

TEST(TargetListReader, FileIsMadeFromOneTemplateForARole) {
    const auto entry = [](const std::string& name, const std::string& roles) {
        return "[templates.\"" + name + "\"]\ntarget = \"/x\"\nroles = \"" + roles + "\"\n";
    };
    EXPECT_THAT(ProblemsOf(entry("a", "server") + entry("b", "client")), IsEmpty());
    EXPECT_THAT(
        ProblemsOf(entry("a", "server") + entry("b", "client") + entry("c", "both")),
        ElementsAre(
            "LIST:8:10: target /x is made from [b] too (see line 5, give each file to one template)"));
    EXPECT_THAT(
        ProblemsOf(entry("a", "both") + entry("b", "client")),
        ElementsAre(
            "LIST:5:10: target /x is made from [a] too (see line 2, give each file to one template)"));
}

TEST(TargetListReader, ColumnsAreBytes) {
    EXPECT_THAT(ProblemsOf("[templates.\"\xC3\xA9\xE2\x82\xAC\"] # \xC3\xA9\ntarget = "
                           "\"/\xF0\x9F\x98\x80\"\nroles = \"both\"\n"
                           "restart = { \"\xC3\xA9\" = 1, x = 2 }\n"),
                ElementsAre("LIST:4:13: restart has no role \"\xC3\xA9\" (use server and client)",
                            "LIST:4:23: restart has no role \"x\" (use server and client)"));
}

TEST(TargetListReader, FirstMistakeOfSyntaxIsTold) {
    EXPECT_THAT(
        ProblemsOf(Entry("trust = somebody\nsecret")),
        ElementsAre(std::string("LIST:4:9: is no TOML: Error while parsing value: could not determine "
                                "value type") +
                    kOfSyntax));
    EXPECT_THAT(
        ProblemsOf(Entry("roles = \"both\"")),
        ElementsAre(std::string("LIST:4:9: is no TOML: Error while parsing key-value pair: cannot redefine "
                                "existing string 'roles'") +
                    kOfSyntax));
    EXPECT_THAT(ProblemsOf(Entry("") + Entry("")),
                ElementsAre("LIST:5:1: [templates.\"one\"] is there twice (see line 1, put both into one)"));
    EXPECT_THAT(ProblemsOf("[one.conf]\ntarget = /etc/one.conf\nroles = both\n"),
                ElementsAre(testing::StartsWith("LIST:2:10: is no TOML: ")));
}

TEST(TargetListReader, NothingIsKnownOfAListThatIsNotUnderstood) {
    const TargetList list = ReadTargetText("LIST", Entry("") + "x");
    EXPECT_FALSE(list.isUnderstood);
    EXPECT_THAT(list.targets, IsEmpty());
    EXPECT_TRUE(ReadTargetText("LIST", Entry("x = 1")).isUnderstood);
}

TEST(TargetListReader, WhatIsNoTextIsRefused) {
    EXPECT_THAT(ProblemsOf(Entry("trust = \"a") + std::string("\0b\"", 3)),
                ElementsAre("LIST:5:1: holds a NUL byte (take it out)"));
    EXPECT_THAT(ProblemsOf("# a\r\n# b\r\n"),
                ElementsAre("LIST:1:4: holds a carriage return (end the lines with a line feed only)"));
    for (const char* bytes : {"\xFF", "\xC3", "\xC3(", "\xC0\x80", "\xE0\x80\x80", "\xE2\x82", "\xED\xA0\x80",
                              "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80"}) {
        EXPECT_THAT(ProblemsOf("\n# \xC3\xA9" + std::string(bytes) + "\n"),
                    ElementsAre("LIST:2:5: holds a byte that is no UTF-8 (save the list as UTF-8)"));
    }
    EXPECT_THAT(
        ProblemsOf("# \xC2\x80 \xE0\xA0\x80 \xED\x9F\xBF \xEF\xBF\xBD \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF\n"),
        IsEmpty());
}

TEST(TargetListReader, LettersBeyondAsciiOutsideOfTextsAreAMistake) {
    for (const char* text : {"c\xCD\x91", "\xC3\xA9 = 1",
                             "a = \xE2\x80\x8B"
                             "1",
                             "a = \"\"\"x\\\n\xC3\xA9\"\"\"\nb"})
        EXPECT_THAT(ProblemsOf(text), ElementsAre(testing::HasSubstr(": is no TOML: "))) << text;
}

}  // namespace
}  // namespace ZET::Deploy
