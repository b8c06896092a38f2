#include "deploy/targets/ClaimedFiles.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

class ClaimedFilesTest : public HostFixture {
  protected:
    ClaimedFiles& Claimed() {
        if (!m_claimed) m_claimed.emplace(TheHost());
        return *m_claimed;
    }

    Target TargetAt(const std::string& templateName, const std::string& file) const {
        Target target;
        target.templateName = templateName;
        target.path = At(file);
        target.roles = {Role::Client};
        return target;
    }

    /// What is wrong with the target; empty when nothing is.
    std::string Add(const std::string& templateName, const std::string& file) {
        const auto problem = Claimed().AddTarget(TargetAt(templateName, file));
        return problem ? problem->Describe() : "";
    }

    /// What is wrong with the template.
    std::string AddTemplate(const std::string& name) {
        Claimed().AddTemplate(name);
        const auto clash = Claimed().ClashOf(name);
        return clash ? clash->Describe() : "";
    }

    std::string UseOf(const std::string& file) { return Claimed().UseBesideTargets(At(file)); }

  private:
    std::optional<ClaimedFiles> m_claimed;
};

TEST_F(ClaimedFilesTest, FreeFilesAreTargets) {
    EXPECT_EQ(Add("a", "out/a"), "");
    EXPECT_EQ(Add("b", "out/b"), "");
    EXPECT_EQ(UseOf("out/a"), "") << "a target itself";
    EXPECT_EQ(UseOf("out/c"), "");
}

TEST_F(ClaimedFilesTest, ProductsOwnFilesAndWhatStandsBesideThemAreTaken) {
    EXPECT_EQ(UseOf("zet.conf"), "the configuration file of the commands");
    EXPECT_EQ(UseOf("templates/targets.toml"), "the list of targets");
    for (const std::string& file : State().Files())
        EXPECT_EQ(Claimed().UseBesideTargets(file), "a file of the status") << file;
    EXPECT_EQ(Add("a", "zet.conf"), At("zet.conf") +
                                        ": is the configuration file of the commands, and made from [a] too "
                                        "(give the target another path)");
    EXPECT_THAT(Add("b", "state/zet.lock.tmp"),
                HasSubstr("is the temporary file of " + At("state/zet.lock")));
}

TEST_F(ClaimedFilesTest, WhatTheProductWouldReadThereIsTaken) {
    AddTemplate("a.conf");
    const std::map<std::string, std::string> uses = {{"etc/values.d/x", "a file of values"},
                                                     {"etc/defaults.d/x.conf", "a file of values"},
                                                     {"etc/targets.d/x.toml", "a list of targets"},
                                                     {"templates/values.conf", "a file of values"},
                                                     {"templates/x", "the template [x]"},
                                                     {"etc/a.conf.old", "the kept working copy of [a.conf]"}};
    for (const auto& [file, use] : uses) {
        EXPECT_EQ(
            Add("made.conf", file),
            At(file) + ": is " + use + ", and made from [made.conf] too (give the target another path)");
        EXPECT_EQ(UseOf(file), use);
    }
    for (const char* const file : {"etc/values.d/.x", "etc/defaults.d/x", "etc/targets.d/x.tom",
                                   "etc/b.conf.old", "etc/values.d/x/y", "templates/x/y"})
        EXPECT_EQ(Add(file, file), "") << file;
}

TEST_F(ClaimedFilesTest, WhatTheProductWouldReadIsTakenWhateverLinkLeadsThere) {
    fs::create_directories(At("fleet"));
    fs::create_directories(At("etc"));
    fs::create_directory_symlink(At("fleet"), At("etc/targets.d"));
    EXPECT_THAT(Add("a", "fleet/x.toml"), HasSubstr("is a list of targets, and made from [a] too"));
}

TEST_F(ClaimedFilesTest, WhatStandsBesideAnOwnFileIsTakenWhicheverIsAskedForFirst) {
    const std::map<std::string, std::string> uses = {
        {"zet.conf.before_zet", "the reserve of " + At("zet.conf")},
        {"zet.conf.no_file_before_zet", "the mark that there was no " + At("zet.conf")},
        {"zet.conf.tmp", "the temporary file of " + At("zet.conf")},
        {"zet.conf.before_zet.tmp", "the temporary file of " + At("zet.conf.before_zet")},
        {"zet.conf.tmp.before_zet", ""},
        {"state/zet-server.status.tmp", "the temporary file of " + At("state/zet-server.status")},
        {"templates/targets.toml.tmp", ""}};
    for (const auto& [file, use] : uses) {
        ClaimedFiles claimed(TheHost());
        EXPECT_EQ(claimed.UseBesideTargets(At(file)), use) << file;
        EXPECT_NE(claimed.AddTarget(TargetAt("a", file)).has_value(), use.empty()) << file;
    }
}

TEST_F(ClaimedFilesTest, FileIsMadeFromOneTemplateOnly) {
    EXPECT_EQ(Add("a", "out/x"), "");
    EXPECT_EQ(Add("b", "out/x"),
              At("out/x") + ": is made from both [a] and [b] (give each file to one template)");
}

TEST_F(ClaimedFilesTest, WhatStandsBesideATargetIsTaken) {
    for (const auto& [suffix, use] : std::map<std::string, std::string>{
             {".before_zet", "the reserve of " + At("out/x")},
             {".no_file_before_zet", "the mark that there was no " + At("out/x")},
             {".tmp", "the temporary file of " + At("out/x")},
             {".before_zet.tmp", "the temporary file of " + At("out/x.before_zet")}}) {
        ClaimedFiles claimed(TheHost());
        EXPECT_FALSE(claimed.AddTarget(TargetAt("a", "out/x")));
        EXPECT_EQ(claimed.UseBesideTargets(At("out/x" + suffix)), use);
        const auto problem = claimed.AddTarget(TargetAt("b", "out/x" + suffix));
        ASSERT_TRUE(problem) << suffix;
        EXPECT_THAT(problem->Describe(), HasSubstr("is " + use)) << suffix;
    }
}

TEST_F(ClaimedFilesTest, TargetWhoseReserveIsAnotherTargetIsRefused) {
    EXPECT_EQ(Add("a", "out/x.before_zet"), "");
    EXPECT_THAT(Add("b", "out/x"), AllOf(HasSubstr(At("out/x.before_zet")), HasSubstr("made from [a]"),
                                         HasSubstr("the reserve of " + At("out/x"))));
}

TEST_F(ClaimedFilesTest, TemplateAndItsWorkingCopyAreNoTargets) {
    EXPECT_EQ(AddTemplate("a"), "");
    EXPECT_EQ(UseOf("etc/a"), "the working copy of [a]");
    EXPECT_EQ(UseOf("etc/a.tmp"), "the temporary file of the working copy of [a]");
    EXPECT_EQ(UseOf("templates/a"), "the template [a]");
    EXPECT_THAT(Add("b", "etc/a"), HasSubstr("is the working copy of [a], and made from [b] too"));
    EXPECT_THAT(Add("a", "templates/a"), HasSubstr("is the template [a], and made from [a] too"));
}

TEST_F(ClaimedFilesTest, TemplateWithTheNameOfAnotherFileIsRefused) {
    EXPECT_EQ(AddTemplate("a"), "");
    EXPECT_EQ(AddTemplate("a.tmp"),
              At("etc/a.tmp") +
                  ": is the temporary file of the working copy of [a], and the working copy of "
                  "[a.tmp] too (give the template another name)");
    EXPECT_THAT(AddTemplate("targets.toml"),
                HasSubstr("is the list of targets, and the template [targets.toml]"));
    EXPECT_THAT(Add("targets.toml", "out/free"), HasSubstr("is the list of targets"))
        << "a target of such a template is refused for its template";
}

TEST_F(ClaimedFilesTest, WorkingCopyInTheWayOfTheProductsOwnFilesIsRefused) {
    Write("zet.conf", "ZET_CFG_DIR=" + At("state") + "\nZET_CFG_TEMPL_DIR=" + At("templates") +
                          "\nZET_VAR_LIB_DIR=" + At("state") + "\n");
    EXPECT_THAT(AddTemplate("zet.lock"),
                HasSubstr("is a file of the status, and the working copy of [zet.lock]"));
    EXPECT_THAT(AddTemplate("zet-server.status.tmp"),
                HasSubstr("is the temporary file of " + At("state/zet-server.status")));
}

TEST_F(ClaimedFilesTest, WorkingCopiesMayStandBesideThePristineTemplates) {
    Write("zet.conf", "ZET_CFG_DIR=" + At("etc") + "\nZET_CFG_TEMPL_DIR=" + At("etc") +
                          "\nZET_VAR_LIB_DIR=" + At("state") + "\n");
    EXPECT_EQ(AddTemplate("a"), "");
    EXPECT_EQ(AddTemplate("a"), "") << "a second time";
}

TEST_F(ClaimedFilesTest, TemplateThatIsALinkIsWhatItLeadsTo) {
    fs::create_symlink(At("out/x"), At("templates/a"));
    fs::create_symlink(At("out"), At("etc/way"));
    Write("templates/plain", "text\n");
    EXPECT_EQ(AddTemplate("plain"), "");
    EXPECT_EQ(AddTemplate("a"), "");
    EXPECT_EQ(AddTemplate("way/y"), "");
    EXPECT_THAT(Add("b", "out/x"), HasSubstr("is the template [a], and made from [b] too"));
    EXPECT_THAT(Add("c", "out/y"), HasSubstr("is the working copy of [way/y], and made from [c] too"));
    EXPECT_THAT(Add("d", "templates/plain"), HasSubstr("is the template [plain]"));
}

TEST_F(ClaimedFilesTest, WhateverWayLeadsToAFileItIsTheSame) {
    fs::create_symlink(At("out"), At("way"));
    fs::create_symlink(At("out/x"), At("etc/link"));
    EXPECT_EQ(Add("a", "out/x"), "");
    EXPECT_THAT(Add("b", "way/x"), HasSubstr("is made from both [a] and [b]"));
    EXPECT_THAT(Add("c", "etc/link"), HasSubstr("is made from both [a] and [c]"));
    EXPECT_THAT(Add("d", "etc/../out/x"), HasSubstr("is made from both [a] and [d]"));
    EXPECT_EQ(UseOf("way/x.tmp"), "the temporary file of " + At("out/x"));
}

TEST_F(ClaimedFilesTest, ListedTargetsOfTheRoleAreTaken) {
    Target ofOther = TargetAt("other", "out/other");
    ofOther.roles = {Role::Server};
    Target broken = TargetAt("broken", "");
    broken.path = "";
    const std::vector<Target> listed = {TargetAt("a", "out/a"), TargetAt("b", "out/b"), ofOther, broken};
    Claimed().AddListed(listed, {listed[1]});
    EXPECT_THAT(Add("c", "out/a"), HasSubstr("is made from both [a] and [c]"));
    EXPECT_EQ(UseOf("etc/b"), "the working copy of [b]") << "the template is known already";
    EXPECT_EQ(Add("b", "out/b"), "") << "the target was to be added later";
    EXPECT_EQ(Add("d", "out/other"), "") << "another role's";
    EXPECT_EQ(UseOf("etc/other"), "");
    EXPECT_EQ(UseOf("etc/broken"), "");
}

TEST_F(ClaimedFilesTest, ListedTargetToWhichNoWayLeadsKeepsNothingFromTheOthers) {
    fs::create_symlink("loop", At("out/loop"));
    Claimed().AddListed({TargetAt("a", "out/loop/x"), TargetAt("b", "out/b")});
    EXPECT_THAT(Add("c", "out/b"), HasSubstr("is made from both [b] and [c]"));
}

TEST_F(ClaimedFilesTest, TargetOfATreeIsAFileOfTheTree) {
    Write("zet.conf", "ZET_CFG_DIR=/etc\nZET_VAR_LIB_DIR=/state\nZET_CFG_TEMPL_DIR=/templates\n");
    m_options.root = At(".");
    Host host("/zet.conf", m_options, m_told);
    ClaimedFiles claimed(host);
    Target target = TargetAt("a", "");
    target.path = "/zet.conf";
    const auto problem = claimed.AddTarget(target);
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->file, At("zet.conf"));
}

}  // namespace
}  // namespace ZET::Deploy
