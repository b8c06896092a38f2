#include <gmock/gmock.h>

#include <ctime>

#include "../HostFixture.h"
#include "ListTexts.h"
#include "deploy/host/Failure.h"
#include "deploy/lists/HostLists.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TargetList ListOf(const std::vector<std::string>& texts, const StringMap& params = {}) {
    std::vector<ListText> lists;
    for (const std::string& text : texts)
        lists.push_back({"L" + std::to_string(lists.size() + 1), text});
    return ReadTargetTexts(lists, [&](const std::string& name) {
        const auto found = params.find(name);
        return found == params.end() ? std::string() : found->second;
    });
}

TEST(OwnLists, LaterListChangesSingleKeys) {
    const TargetList list = ListOf(
        {Entry("check = [\"x\", \"y\"]\nrestart = { server = [\"s\"], client = [\"c\"] }\nsecret = true",
               "a"),
         "[templates.\"a\"]\ncheck = [\"z\"]\nrestart = { server = [\"t\"] }\nroles = \"server\"\n"});
    EXPECT_THAT(ProblemsOf(list), IsEmpty());
    ASSERT_THAT(list.targets, SizeIs(1));
    const Target& target = list.targets[0];
    EXPECT_EQ(target.path, "/etc/a");
    EXPECT_THAT(target.check, ElementsAre("z")) << "a list is replaced";
    EXPECT_THAT(target.RestartsFor(Role::Server), ElementsAre("t"));
    EXPECT_THAT(target.RestartsFor(Role::Client), IsEmpty()) << "a table is, too";
    EXPECT_FALSE(target.IsFor(Role::Client));
    EXPECT_TRUE(target.isSecret) << "what is not said stays";
    EXPECT_EQ(target.file, "L1");
    EXPECT_EQ(target.line, 1);
    EXPECT_THAT(target.changedBy, ElementsAre("L2"));
}

TEST(OwnLists, LaterListAddsInItsOrder) {
    const TargetList list = ListOf({Entry("", "z"), Entry("", "b") + Entry("", "a")});
    ASSERT_THAT(list.targets, SizeIs(3));
    EXPECT_EQ(list.targets[1].templateName, "b");
    EXPECT_EQ(list.targets[2].templateName, "a");
    EXPECT_EQ(list.targets[2].file, "L2");
    EXPECT_EQ(list.targets[2].line, 5);
}

TEST(OwnLists, NewKeysAreTaken) {
    const TargetList list =
        ListOf({Entry("reload = [\"s\"]\nnotice = false\nmode = \"0640\"\n"
                      "owner = \"nslcd:nslcd\"\nwhen = \"IDENTITY=a=b\"\nenabled = true",
                      "a")});
    EXPECT_THAT(ProblemsOf(list), IsEmpty());
    const Target& target = list.targets.at(0);
    EXPECT_THAT(target.ServicesFor(Role::Client).reload, ElementsAre("s"));
    EXPECT_FALSE(target.hasNotice);
    EXPECT_EQ(target.mode, mode_t{0640});
    EXPECT_EQ(target.owner, "nslcd:nslcd");
    EXPECT_EQ(target.when.parameter, "IDENTITY");
    EXPECT_EQ(target.when.value, "a=b");
}

TEST(OwnLists, WrongValuesOfNewKeysAreProblems) {
    for (const auto& [line, text] : std::vector<std::pair<std::string, std::string>>{
             {"mode = 600", "mode is a number"},
             {"mode = \"4755\"", "mode is \"4755\""},
             {"mode = \"0888\"", "mode is \"0888\""},
             {"mode = \"\"", "mode is \"\""},
             {"owner = \"a:b:c\"", "owner is \"a:b:c\""},
             {"owner = \":a\"", "owner is \":a\""},
             {"owner = \"a:\"", "owner is \"a:\""},
             {"when = \"IDENTITY\"", "when is \"IDENTITY\""},
             {"when = \"1=2\"", "when is \"1=2\""},
             {"when = \"IDENTITY=${domain}\"", "a placeholder is not replaced here"},
             {"enabled = 0", "enabled is a number"},
             {"notice = \"no\"", "notice is a text"},
             {"reload = \"s\"", "reload is a text"}}) {
        EXPECT_THAT(ProblemsOf(ListOf({Entry(line, "a")})),
                    ElementsAre(testing::AllOf(testing::StartsWith("L1:4:"), HasSubstr(text))))
            << line;
    }
}

TEST(OwnLists, WhenFollowsAParameter) {
    const std::vector<std::string> texts = {Entry("when = \"SITE=x\"", "a") + Entry("when = \"SITE=\"", "b")};
    EXPECT_FALSE(ListOf(texts).targets.at(0).IsInForce());
    EXPECT_EQ(ListOf(texts).targets.at(0).WhyNot(), "SITE=x is not so");
    EXPECT_TRUE(ListOf(texts).targets.at(1).IsInForce());
    EXPECT_TRUE(ListOf(texts, {{"SITE", "x"}}).targets.at(0).IsInForce());
    EXPECT_FALSE(ListOf(texts, {{"SITE", "x"}}).targets.at(1).IsInForce());
}

TEST(OwnLists, TwoEntriesForOneFileAreAProblemOnlyInForce) {
    const std::string other = "[templates.\"b\"]\ntarget = \"/etc/a\"\nroles = \"client\"\n";
    EXPECT_THAT(ProblemsOf(ListOf({Entry("", "a"), other})),
                ElementsAre("L2:2:10: target /etc/a is made from [a] too (see L1:2, give each file to one "
                            "template)"));
    EXPECT_THAT(ProblemsOf(ListOf({Entry("enabled = false", "a"), other})), IsEmpty());
    EXPECT_THAT(ProblemsOf(ListOf({Entry("when = \"X=1\"", "a"), other + "when = \"X=2\""}, {{"X", "2"}})),
                IsEmpty());
    EXPECT_THAT(ProblemsOf(ListOf({Entry("roles = \"server\"", "a")})), SizeIs(1)) << "a key is there twice";
}

TEST(OwnLists, RequiredKeysMayComeFromAnyList) {
    EXPECT_THAT(
        ProblemsOf(ListOf({"[templates.\"a\"]\ntarget = \"/a\"\n", "[templates.\"a\"]\nroles = \"both\"\n"})),
        IsEmpty());
    EXPECT_THAT(ProblemsOf(ListOf({"[templates.\"a\"]\nsecret = true\n"})),
                ElementsAre(HasSubstr("L1:1:12: template [a] has no target"), HasSubstr("has no roles")));
    EXPECT_THAT(ProblemsOf(ListOf({"", "[templates.\"a\"]\ntarget = \"/a\"\n"})),
                ElementsAre(HasSubstr("L2:1:12: template [a] has no roles")));
    EXPECT_THAT(ProblemsOf(ListOf({"", "[templates.\"gone\"]\nenabled = false\n"})), IsEmpty())
        << "what is left out need not be there";
}

TEST(OwnLists, KeysOfATemplateThatIsNotShippedAnyMoreCountForNothing) {
    const TargetList list = ListOf({"", "[templates.\"gone\"]\nmode = \"0640\"\nroles = \"both\"\n"});
    EXPECT_THAT(ProblemsOf(list), IsEmpty());
    EXPECT_TRUE(list.targets.at(0).isStray);
    EXPECT_FALSE(list.targets.at(0).IsInForce());
    EXPECT_EQ(list.targets.at(0).WhyNot(), "no list before has it");
    EXPECT_FALSE(ListOf({"", Entry("", "own")}).targets.at(0).isStray);
}

TEST(OwnLists, KeysOfAnEditThatIsNotShippedAnyMoreCountForNothing) {
    const TargetList list = ListOf({"", "[[edits]]\nname = \"gone\"\nline = \"x\"\n"});
    EXPECT_THAT(ProblemsOf(list), IsEmpty());
    EXPECT_TRUE(list.edits.at(0).isStray);
    EXPECT_FALSE(list.edits.at(0).IsInForce());
    EXPECT_THAT(ProblemsOf(ListOf({"", "[[edits]]\nline = \"x\"\n"})), SizeIs(2)) << "it has no name";
}

TEST(OwnLists, MistakesOfEveryListAreTold) {
    const TargetList list = ListOf({"wrong = 1", "[[", Entry("secret = 1", "a")});
    EXPECT_FALSE(list.isUnderstood);
    EXPECT_THAT(ProblemsOf(list), ElementsAre(HasSubstr("L1:1:1: unknown key"), HasSubstr("L2:1:"),
                                              HasSubstr("L3:4:10: secret is a number")));
}

TEST(OwnLists, TemplateAmongListsOrValuesIsAProblem) {
    for (const char* name : {"targets.d/x.toml", "values.d/x", "defaults.d/x.conf", "values.conf"})
        EXPECT_THAT(ProblemsOf(ListOf({Entry("", name)})),
                    ElementsAre(HasSubstr("would stand among lists or values")));
}

TEST(OwnLists, EditsAreTaken) {
    const TargetList list =
        ListOf({"[[edits]]\nname = \"n\"\nfile = \"/f\"\nparam = \"p\"\nvalue = \"v\"\n"
                "[[edits]]\nfile = \"/f\"\npattern = \"^x\"\nline = \"xy\"\nroles = \"server\"\n"
                "optional = true\nwhen = \"A=b\"\n",
                "[[edits]]\nname = \"n\"\nvalue = \"w\"\n"});
    EXPECT_THAT(ProblemsOf(list), IsEmpty());
    ASSERT_THAT(list.edits, SizeIs(2));
    EXPECT_EQ(list.edits[0].param, "p");
    EXPECT_EQ(list.edits[0].value, "w");
    EXPECT_EQ(list.edits[0].path, "/f");
    EXPECT_TRUE(list.edits[0].IsFor(Role::Client) && list.edits[0].IsFor(Role::Server));
    EXPECT_THAT(list.edits[0].changedBy, ElementsAre("L2"));
    EXPECT_EQ(list.edits[1].pattern, "^x");
    EXPECT_EQ(list.edits[1].text, "xy");
    EXPECT_TRUE(list.edits[1].isOptional);
    EXPECT_FALSE(list.edits[1].IsFor(Role::Client));
    EXPECT_FALSE(list.edits[1].IsInForce());
    EXPECT_EQ(list.edits[1].line, 6);
}

TEST(OwnLists, BrokenEditsAreProblems) {
    EXPECT_THAT(
        ProblemsOf(ListOf({"[[edits]]\nparam = \"p\"\n"})),
        ElementsAre(HasSubstr("L1:1:1: an edit has no file"), HasSubstr("an edit lacks what it sets")));
    EXPECT_THAT(ProblemsOf(ListOf({"[[edits]]\nfile = \"f\"\nparam = \"p\"\nvalue = \"\"\n"})),
                ElementsAre(HasSubstr("L1:2:8: file \"f\" is no absolute path")));
    EXPECT_THAT(ProblemsOf(ListOf({"[[edits]]\nfile = \"/f\"\nparm = \"p\"\nparam = \"p\"\nvalue = \"\"\n"})),
                ElementsAre(HasSubstr("L1:3:1: unknown key \"parm\"")));
    EXPECT_THAT(ProblemsOf(ListOf({"edits = 1\n"})), ElementsAre(HasSubstr("edits is a number")));
    EXPECT_THAT(ProblemsOf(ListOf({"[[edits]]\nname = \"n\"\nfile = \"/f\"\nparam = \"p\"\nvalue = \"\"\n"
                                   "[[edits]]\nname = \"n\"\n"})),
                ElementsAre(HasSubstr("L1:6:1: edit \"n\" is there twice")));
}

TEST(OwnLists, EditWithKeysOfBothPairsIsAProblem) {
    const std::string head = "[[edits]]\nname = \"n\"\nfile = \"/f\"\n";
    const auto problemsOf = [&](const std::string& keys, const std::string& later) {
        return ProblemsOf(ListOf({head + keys, "[[edits]]\nname = \"n\"\n" + later}));
    };
    const std::string remedy = " in one edit (keep param and value, or pattern and line)";
    const std::string param = "param = \"p\"\nvalue = \"v\"\n";
    const std::string line = "pattern = \"^x\"\nline = \"xy\"\n";
    EXPECT_THAT(problemsOf(param + line, ""), ElementsAre("L1:6:1: pattern stands beside param" + remedy));
    EXPECT_THAT(problemsOf(line + param, ""), ElementsAre("L1:6:1: param stands beside pattern" + remedy));
    EXPECT_THAT(problemsOf("param = \"p\"\nline = \"xy\"\n", "roles = \"both\"\n"),
                ElementsAre("L1:5:1: line stands beside param" + remedy));
    EXPECT_THAT(problemsOf(param, "line = \"xy\"\n"),
                ElementsAre("L2:1:1: line stands beside param" + remedy));
    EXPECT_THAT(problemsOf(line, "value = \"v\"\n"),
                ElementsAre("L2:1:1: value stands beside pattern" + remedy));
    EXPECT_THAT(problemsOf(param, line), IsEmpty());
    EXPECT_THAT(problemsOf(line, param), IsEmpty());
}

class OwnListsTest : public HostFixture {
  protected:
    OwnListsTest() {
        AddTarget("a");
        fs::create_directory(At("etc/targets.d"));
    }
};

TEST_F(OwnListsTest, ListsAreReadInTheOrderOfTheirBytes) {
    Write("etc/targets.d/20.toml", "[templates.\"a\"]\nmode = \"0620\"\n");
    Write("etc/targets.d/10.toml", "[templates.\"a\"]\nmode = \"0610\"\n");
    Write("etc/targets.d/.30.toml", "nonsense");
    Write("etc/targets.d/30.toml~", "nonsense");
    const TargetList list = ReadTargetList(TheHost());
    EXPECT_THAT(ProblemsOf(list), IsEmpty());
    EXPECT_EQ(list.targets.at(0).mode, mode_t{0620});
    EXPECT_THAT(list.targets.at(0).changedBy,
                ElementsAre(At("etc/targets.d/10.toml"), At("etc/targets.d/20.toml")));
}

TEST_F(OwnListsTest, WhenAsksWhicheverSourceHasTheParameter) {
    Write("templates/values.conf", "SITE=berlin\n");
    Write("etc/targets.d/10.toml", "[templates.\"a\"]\nwhen = \"SITE=berlin\"\n");
    EXPECT_TRUE(ReadTargetList(TheHost()).targets.at(0).IsInForce());
    fs::create_directory(At("etc/defaults.d"));
    Write("etc/defaults.d/10.conf", "SITE=paris\n");
    EXPECT_FALSE(ReadTargetList(AnotherRun()).targets.at(0).IsInForce());
}

TEST_F(OwnListsTest, WhenAsksForTheValueThatTemplatesGet) {
    fs::create_directory(At("etc/values.d"));
    Write("templates/values.conf", "SITE=paris\n");
    Write("etc/values.d/site", "berlin\n");
    Write("etc/values.d/rack", "7");
    AddTarget("b");
    Write("etc/targets.d/10.toml",
          "[templates.\"a\"]\nwhen = \"SITE=berlin\"\n[templates.\"b\"]\nwhen = \"RACK=7\"\n");
    const TargetList list = ReadTargetList(TheHost());
    EXPECT_EQ(TheHost().Values().Own().at("${site}"), "berlin");
    EXPECT_TRUE(list.targets.at(0).IsInForce());
    EXPECT_TRUE(list.targets.at(1).IsInForce());
}

TEST_F(OwnListsTest, WhenAsksForNoTextThatTemplatesDoNotGet) {
    fs::create_directory(At("etc/values.d"));
    Write("etc/values.d/domain", "other.org");
    Write("etc/targets.d/10.toml", "[templates.\"a\"]\nwhen = \"DOMAIN=example.org\"\n");
    EXPECT_TRUE(ReadTargetList(TheHost()).targets.at(0).IsInForce());
}

TEST_F(OwnListsTest, TemplateThatIsNotInForceIsNotSelected) {
    Write("etc/targets.d/10.toml", "[templates.\"a\"]\nenabled = false\n");
    EXPECT_THAT(SelectTargets(TheHost(), {}), IsEmpty());
    EXPECT_THAT(MessageOf<UsageError>([&] { SelectTargets(TheHost(), {"a"}); }),
                HasSubstr("the template \"a\" is not in force: it is disabled"));
}

TEST_F(OwnListsTest, EntryInForceIsTheFilesTarget) {
    AddTarget("b", "when = \"X=1\"");
    Write("etc/targets.d/10.toml", "[templates.\"c\"]\ntarget = \"" + At("out/b") + "\"\nroles = \"both\"\n");
    HostLists lists(TheHost());
    ASSERT_NE(lists.TargetNamed(At("out/b")), nullptr);
    EXPECT_EQ(lists.TargetNamed(At("out/b"))->templateName, "c");
    EXPECT_EQ(lists.EntryOf("b")->templateName, "b");
    EXPECT_EQ(lists.EntryOf("x"), nullptr);
}

TEST_F(OwnListsTest, ListThatIsNoFileIsAFailureAtOnce) {
    ASSERT_EQ(mkfifo(At("etc/targets.d/10.toml").c_str(), 0600), 0);
    EXPECT_THAT(MessageOf<Failure>([&] { ReadTargetList(TheHost()); }), HasSubstr("is no regular file"));
}

double SecondsFor(int count) {
    std::string shipped;
    std::string own;
    for (int i = 0; i < count; ++i) {
        shipped += Entry("", std::to_string(i));
        own += "[templates.\"" + std::to_string(i) + "\"]\nmode = \"0600\"\n[[edits]]\nname = \"" +
               std::to_string(i) + "\"\nfile = \"/f\"\nparam = \"p\"\nvalue = \"v\"\n";
    }
    const std::clock_t begin = std::clock();
    const TargetList list = ListOf({shipped, own});
    EXPECT_EQ(list.targets.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(list.targets.back().mode, mode_t{0600});
    EXPECT_EQ(list.edits.size(), static_cast<std::size_t>(count));
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

TEST(OwnListsLimits, TimeGrowsWithTheLists) {
    const double few = SmallestTime(SecondsFor, 10000);
    const double many = SmallestTime(SecondsFor, 40000);
    EXPECT_LT(many, 8 * few);
}

}  // namespace
}  // namespace ZET::Deploy
