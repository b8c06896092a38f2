#include "deploy/state/HostValues.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class HostValuesTest : public HostFixture {
  protected:
    HostValuesTest() {
        for (const char* directory : {"etc/defaults.d", "etc/values.d"})
            fs::create_directory(At(directory));
    }

    void WriteMain(const std::string& lines) {
        Write("zet.conf", "DOMAIN=example.org\n" + Directories() + lines);
    }

    HostValues& Values() { return TheHost().Values(); }

    std::vector<std::string> Problems() {
        std::vector<std::string> told;
        for (const Problem& problem : AnotherRun().Values().Problems())
            told.push_back(problem.Describe());
        return told;
    }

    std::string PlaceOf(const std::string& placeholder) {
        const auto source = Values().SourceOfPlaceholder(placeholder);
        return source ? source->file + ":" + std::to_string(source->line) : "";
    }
};

TEST_F(HostValuesTest, ParameterThatIsNotTheProductsIsAPlaceholder) {
    WriteMain("NTP_SERVER=ntp.example.org\nREALM=X.ORG\nEmpty=\n");
    EXPECT_THAT(Values().Own(), ElementsAre(Pair("${empty}", ""), Pair("${ntp_server}", "ntp.example.org")));
    EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(HostValuesTest, LaterSourceWins) {
    Write("templates/values.conf", "A=shipped\nB=shipped\nC=shipped\n");
    Write("etc/defaults.d/20.conf", "B=late fleet\n");
    Write("etc/defaults.d/10.conf", "B=fleet\nC=fleet\nREALM=FLEET.ORG\nSERVER=fleet.example.org\n");
    WriteMain("C=main\nSERVER=main.example.org\n");
    EXPECT_THAT(Values().Own(),
                ElementsAre(Pair("${a}", "shipped"), Pair("${b}", "late fleet"), Pair("${c}", "main")));
    EXPECT_EQ(TheHost().Param("REALM"), "FLEET.ORG");
    EXPECT_EQ(TheHost().Core().GetServerName(), "main.example.org");
    EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(HostValuesTest, EachTellsWhereItStands) {
    Write("templates/values.conf", "# what the templates use\nA=shipped\n");
    Write("etc/defaults.d/10.conf", "\nB=fleet\nREALM=FLEET.ORG\n");
    Write("etc/values.d/text", "one\ntwo\n");
    WriteMain("C=main\n");
    EXPECT_EQ(PlaceOf("${a}"), At("templates/values.conf") + ":2");
    EXPECT_EQ(PlaceOf("${b}"), At("etc/defaults.d/10.conf") + ":2");
    EXPECT_EQ(PlaceOf("${c}"), At("zet.conf") + ":5");
    EXPECT_EQ(PlaceOf("${text}"), At("etc/values.d/text") + ":0");
    EXPECT_EQ(PlaceOf("${realm}"), At("etc/defaults.d/10.conf") + ":3");
    EXPECT_EQ(PlaceOf("${ldap_dc}"), At("zet.conf") + ":1") << "it is made of the domain";
    EXPECT_EQ(PlaceOf("${minimum_uid}"), "") << "the product's default";
    EXPECT_EQ(Values().GivenBelowMain("B")->line, 2);
    EXPECT_FALSE(Values().GivenBelowMain("C"));
}

TEST_F(HostValuesTest, TextOfSeveralLinesIsAFileWithoutItsLastLineFeed) {
    Write("etc/values.d/one", "a\n\nb\n");
    Write("etc/values.d/two", "\n\n");
    Write("etc/values.d/empty", "");
    Write("etc/values.d/.hidden", "x");
    EXPECT_THAT(Values().Own(),
                ElementsAre(Pair("${empty}", ""), Pair("${one}", "a\n\nb"), Pair("${two}", "\n")));
}

TEST_F(HostValuesTest, TextWinsOverAShippedDefault) {
    Write("templates/values.conf", "EXTRA=\n");
    Write("etc/values.d/extra", "a\nb\n");
    EXPECT_THAT(Values().Own(), ElementsAre(Pair("${extra}", "a\nb")));
    EXPECT_THAT(Problems(), IsEmpty());
}

TEST_F(HostValuesTest, NameOfTheProductIsAProblemAndHasNoEffect) {
    Write("etc/values.d/realm", "x\n");
    Write("etc/values.d/domain_dn", "x\n");
    Write("etc/values.d/zet_x", "x\n");
    WriteMain("MAX_LIFE=1\nrealm=x\nZET_SINC=no\nZET_OTHER=x\n");
    EXPECT_THAT(
        Problems(),
        ElementsAre(
            At("zet.conf") +
                ":5: MAX_LIFE would be ${max_life}, which the product makes of TICKET_MAX_LIFE (set "
                "TICKET_MAX_LIFE, or give it another name)",
            At("zet.conf") +
                ":6: realm would be ${realm}, which the product makes of REALM (set REALM, or give it "
                "another name)",
            At("zet.conf") + ":7: the product has no parameter ZET_SINC (did you mean ZET_SYNC?)",
            At("zet.conf") +
                ":8: the product has no parameter ZET_OTHER (names of your own must not begin with "
                "ZET_)",
            At("etc/values.d/domain_dn") +
                ": the product has the parameter DOMAIN_DN (give the value another name)",
            At("etc/values.d/realm") +
                ": ${realm} is made of the product's parameter REALM (give the value another "
                "name)",
            At("etc/values.d/zet_x") +
                ": names that begin with zet_ are the product's (give the value another "
                "name)"));
    EXPECT_THAT(Values().Own(), IsEmpty());
}

TEST_F(HostValuesTest, NameInBothPlacesIsAProblem) {
    Write("etc/values.d/motd", "x\n");
    Write("etc/defaults.d/10.conf", "MOTD=x\n");
    EXPECT_THAT(Problems(), ElementsAre(At("etc/defaults.d/10.conf") + ":1: MOTD is the file " +
                                        At("etc/values.d/motd") + ", too (keep one of the two)"));
}

TEST_F(HostValuesTest, TwoSpellingsOfAPlaceholderAreAProblem) {
    WriteMain("Motd=x\nMOTD=y\n");
    EXPECT_THAT(Problems(), ElementsAre(HasSubstr(":6: MOTD and Motd are both ${motd}")));
}

TEST_F(HostValuesTest, ShippedDefaultOfTheProductsOwnIsAProblem) {
    Write("templates/values.conf", "REALM=X\nOWN=x\n");
    EXPECT_THAT(
        Problems(),
        ElementsAre(HasSubstr("values.conf:1: REALM is a parameter of the product, which has a default")));
    EXPECT_EQ(TheHost().Param("REALM"), "EXAMPLE.ORG");
    EXPECT_THAT(Values().Own(), ElementsAre(Pair("${own}", "x")));
}

TEST_F(HostValuesTest, BrokenLinesAreProblemsAndTheOthersCount) {
    Write("etc/defaults.d/10.conf", "no sign\nA =x\n1A=x\n# B\n  GOOD=x\n");
    EXPECT_THAT(Problems(), ElementsAre(HasSubstr("10.conf:1: no \"=\" in the line"),
                                        HasSubstr("10.conf:2: a blank before \"=\""),
                                        HasSubstr("10.conf:3: \"1A\" is no name of a parameter")));
    EXPECT_THAT(Values().Own(), ElementsAre(Pair("${good}", "x")));
}

TEST_F(HostValuesTest, FilesThatAreNoneAreProblemsAtOnce) {
    fs::create_directory(At("etc/values.d/directory"));
    ASSERT_EQ(mkfifo(At("etc/defaults.d/10.conf").c_str(), 0600), 0);
    Write("etc/values.d/Upper", "x");
    Write("etc/values.d/nul", std::string("a\0b", 3));
    EXPECT_THAT(Problems(), ElementsAre(HasSubstr("10.conf: is no regular file"),
                                        HasSubstr("values.d/Upper: \"Upper\" is no"),
                                        HasSubstr("values.d/directory: is a directory"),
                                        HasSubstr("values.d/nul: holds a NUL byte")));
}

TEST_F(HostValuesTest, WhatCouldNotBeReadIsKnownAndHasNoValue) {
    Write("templates/values.conf", "EXTRA=shipped\nA=shipped\n");
    fs::create_symlink("gone", At("etc/values.d/extra"));
    fs::create_symlink("gone", At("etc/defaults.d/10.conf"));
    EXPECT_THAT(Values().UnreadSources().params,
                ElementsAre(testing::Field(&Problem::file, At("etc/defaults.d/10.conf"))));
    EXPECT_THAT(Values().UnreadSources().texts,
                ElementsAre(testing::Field(&Problem::file, At("etc/values.d/extra"))));
    EXPECT_THAT(Values().Own(), ElementsAre(Pair("${a}", "shipped")));
}

TEST_F(HostValuesTest, DirectoryOfTheLowerSourcesCannotBeMovedByThem) {
    Write("etc/defaults.d/10.conf", "ZET_CFG_DIR=/other\nZET_VAR_LIB_DIR=state\n");
    EXPECT_THAT(Problems(), ElementsAre(HasSubstr("10.conf:1: ZET_CFG_DIR has no effect here"),
                                        HasSubstr("10.conf:2: 'state' is no value for ZET_VAR_LIB_DIR")));
    EXPECT_EQ(TheHost().Param("ZET_CFG_DIR"), At("etc"));
}

TEST_F(HostValuesTest, FilesThatRootReliesOnAreKnown) {
    Write("templates/values.conf", "");
    Write("etc/defaults.d/10.conf", "");
    Write("etc/values.d/one", "");
    EXPECT_THAT(Values().Files(),
                ElementsAre(At("etc/defaults.d"), At("etc/defaults.d/10.conf"), At("templates/values.conf"),
                            At("etc/values.d"), At("etc/values.d/one")));
}

TEST_F(HostValuesTest, EmptyDirectoriesAreReliedOnToo) {
    EXPECT_THAT(Values().Files(), ElementsAre(At("etc/defaults.d"), At("etc/values.d")));
    fs::remove(At("etc/values.d"));
    EXPECT_THAT(AnotherRun().Values().Files(), ElementsAre(At("etc/defaults.d")));
}

TEST_F(HostValuesTest, LinkThatLeadsNowhereIsNoEmptyDirectory) {
    for (const char* const directory : {"etc/defaults.d", "etc/values.d"}) {
        fs::remove(At(directory));
        fs::create_directory_symlink(At("gone"), At(directory));
    }
    const std::string text =
        ": is a link to " + At("gone") + ", which is not there (correct the link, or remove it)";
    EXPECT_THAT(Problems(), ElementsAre(At("etc/defaults.d") + text, At("etc/values.d") + text));
}

}  // namespace
}  // namespace ZET::Deploy
