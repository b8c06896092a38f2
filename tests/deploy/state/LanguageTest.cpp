#include "deploy/state/Language.h"

#include <gmock/gmock.h>
#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <thread>

#include "../HostFixture.h"
#include "deploy/host/Words.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {
namespace {

class LanguageOfFiles : public HostFixture {
  protected:
    LanguageOfFiles() {
        setlocale(LC_MESSAGES, "C.UTF-8");
        setenv("LANGUAGE", "de", 1);
        bindtextdomain(Text::kDomain, ZET_CATALOGUES);
    }
    ~LanguageOfFiles() override {
        unsetenv("LANGUAGE");
        setlocale(LC_MESSAGES, "C");
    }
};

TEST_F(LanguageOfFiles, IsThatOfTheParameterAsLongAsTheyAreWritten) {
    {
        const WrittenLanguage language(TheHost().Core());
        EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C");
        EXPECT_EQ(std::getenv("LANGUAGE"), nullptr);
    }
    EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
    EXPECT_STREQ(std::getenv("LANGUAGE"), "de");
}

TEST_F(LanguageOfFiles, IsNotThatOfWhatTheLibrarySaysMeanwhile) {
    const WrittenLanguage language(TheHost().Core());
    EXPECT_STREQ(_("does not exist"), "existiert nicht");
    EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C");
    EXPECT_EQ(std::getenv("LANGUAGE"), nullptr);
}

TEST_F(LanguageOfFiles, IsNotThatOfWhatTheCoreSaysMeanwhile) {
    {
        const WrittenLanguage language(TheHost().Core());
        bindtextdomain("libzet-core", ZET_CATALOGUES);
        const auto problem = ProblemOfParam("MINIMUM_UID", "x");
        ASSERT_TRUE(problem);
        EXPECT_THAT(problem->text, testing::EndsWith("; erwartet wird eine Zahl"));
        EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C");
        EXPECT_EQ(std::getenv("LANGUAGE"), nullptr);
    }
    EXPECT_EQ(MakeMessagesBy(nullptr), nullptr);
}

TEST_F(LanguageOfFiles, IsOfNoConcernToAThreadThatWritesNone) {
    const WrittenLanguage language(TheHost().Core());
    std::thread([] {
        EXPECT_NE(std::string(_("does not exist")), "");
        EXPECT_TRUE(ProblemOfParam("MINIMUM_UID", "x"));
        EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C");
    }).join();
    EXPECT_STREQ(_("does not exist"), "existiert nicht");
}

TEST_F(LanguageOfFiles, DoesNotGetIntoWhatIsSaidToWhoReadsEnglish) {
    unsetenv("LANGUAGE");
    setlocale(LC_MESSAGES, "C");
    Write("zet.conf", "DOMAIN=example.org\nZET_LANG=C.UTF-8\n" + Directories());
    const WrittenLanguage language(TheHost().Core());
    setenv("LANGUAGE", "de", 1);  // what a file would be in
    EXPECT_STREQ(_("does not exist"), "does not exist");
}

}  // namespace
}  // namespace ZET::Deploy
