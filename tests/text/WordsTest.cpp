#include "text/Words.h"

#include <gtest/gtest.h>
#include <libintl.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>

namespace ZET::Text {
namespace {

/// A reader whose language is German, and the catalogues that were just built.
class WordsForAGerman : public testing::Test {
  protected:
    WordsForAGerman() {
        setlocale(LC_MESSAGES, "C.UTF-8");
        setenv("LANGUAGE", "de", 1);
        bindtextdomain(kDomain, ZET_CATALOGUES);
    }
    ~WordsForAGerman() override {
        unsetenv("LANGUAGE");
        setlocale(LC_MESSAGES, "C");
    }
};

TEST(Filling, PutsTheValuesIntoTheGapsInTheirOrder) {
    EXPECT_EQ(Filled("%s of %s", {"one", "two"}), "one of two");
    EXPECT_EQ(Filled("%s%s", {"", "b"}), "b");
}

TEST(Filling, TakesNoGapInAValueForOneOfTheText) {
    EXPECT_EQ(Filled("%s of %s", {"%s", "two"}), "%s of two");
}

TEST(Filling, LeavesTheTextAsItIsWhereValuesOrGapsAreLacking) {
    EXPECT_EQ(Filled("%s of %s", {"one"}), "one of %s");
    EXPECT_EQ(Filled("all of it, 100%", {"one"}), "all of it, 100%");
}

TEST(WordsForWhoReadsEnglish, AreThoseOfTheSources) {
    EXPECT_FALSE(IsTranslated());
    EXPECT_STREQ(_("does not exist"), "does not exist");
    EXPECT_EQ(Words("is made from [%s]", "krb5.conf"), "is made from [krb5.conf]");
}

TEST_F(WordsForAGerman, AreGerman) {
    EXPECT_TRUE(IsTranslated());
    EXPECT_STREQ(_("does not exist"), "existiert nicht");
    EXPECT_EQ(Words("edit %s by hand, and commit", "/a"),
              "bearbeiten Sie /a von Hand, und schreiben Sie neu fest");
}

TEST_F(WordsForAGerman, AreTheSourcesWhereTheCatalogueHasNone) {
    EXPECT_STREQ(_("a text that nobody wrote"), "a text that nobody wrote");
}

/// To a catalogue, the empty text is the one about itself.
TEST_F(WordsForAGerman, DoNotBeginWhereThereAreNone) {
    EXPECT_STREQ(_(""), "");
}

TEST_F(WordsForAGerman, LeaveTheErrorThatTheyAreAbout) {
    const LookUp former = LookUpBy([](const char*, const char* text) {
        errno = ENOSPC;
        return text;
    });
    errno = EACCES;
    EXPECT_STREQ(_("cannot be read"), "cannot be read");
    EXPECT_EQ(errno, EACCES);
    LookUpBy(former);
    EXPECT_STREQ(_("cannot be read"), "kann nicht gelesen werden");
}

}  // namespace
}  // namespace ZET::Text
