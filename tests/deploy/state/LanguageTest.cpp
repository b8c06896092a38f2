#include "deploy/state/Language.h"

#include <gmock/gmock.h>
#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "zet/ZETHost.h"

/// Asked by the search for leaks: the C library lets go of no way to locales that it made of LOCPATH for
/// newlocale.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:__argz_add_sep\n";
}

namespace ZET::Deploy {
namespace {

/// As the module asks for its texts.
const char* WrittenOf(const char* text) {
    return dgettext(Text::kDomain, text);
}

class LanguageOfFiles : public HostFixture {
  protected:
    LanguageOfFiles() {
        setlocale(LC_MESSAGES, "C.UTF-8");
        setenv("LANGUAGE", "de", 1);
        bindtextdomain(Text::kDomain, ZET_CATALOGUES);
    }
    ~LanguageOfFiles() override {
        unsetenv("LANGUAGE");
        unsetenv("LOCPATH");
        setlocale(LC_MESSAGES, "C");
    }

    void AskFor(const std::string& language) {
        Write("zet.conf", "DOMAIN=example.org\nZET_LANG=" + language + "\n" + Directories());
    }

    /// A host has few languages, and one has the letters that any has.
    void MakeFrench() const {
        std::filesystem::create_directory(At("locales"));
        std::filesystem::copy("/usr/lib/locale/C.utf8", At("locales/fr_FR.utf8"),
                              std::filesystem::copy_options::recursive);
        setenv("LOCPATH", At("locales").c_str(), 1);
    }

    static void ExpectThatTheProcessStays() {
        EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
        EXPECT_STREQ(std::getenv("LANGUAGE"), "de");
    }
};

TEST_F(LanguageOfFiles, IsThatOfTheParameterAsLongAsTheyAreWritten) {
    {
        const WrittenLanguage language(TheHost().Core());
        EXPECT_STREQ(WrittenOf("does not exist"), "does not exist");
    }
    EXPECT_STREQ(WrittenOf("does not exist"), "existiert nicht");
}

TEST_F(LanguageOfFiles, IsNotThatOfTheProcess) {
    const WrittenLanguage language(TheHost().Core());
    ExpectThatTheProcessStays();
    std::thread([] { EXPECT_STREQ(WrittenOf("does not exist"), "existiert nicht"); }).join();
}

TEST_F(LanguageOfFiles, IsEnglishInAnyLetters) {
    AskFor("C.UTF-8");
    const WrittenLanguage language(TheHost().Core());
    EXPECT_STREQ(WrittenOf("does not exist"), "does not exist");
    ExpectThatTheProcessStays();
}

TEST_F(LanguageOfFiles, IsAnyThatNobodyPrefersAnotherTo) {
    MakeFrench();
    AskFor("fr_FR.utf8");
    for (const char* preference : {"", "fr", "fr_CA:fr"}) {
        setenv("LANGUAGE", preference, 1);
        {
            const WrittenLanguage language(TheHost().Core());
            EXPECT_STREQ(WrittenOf("does not exist"), "n'existe pas") << preference;
            EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
            EXPECT_STREQ(std::getenv("LANGUAGE"), preference);
        }
        EXPECT_STREQ(setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
    }
}

TEST_F(LanguageOfFiles, IsRefusedWhereTheProgramsPreferenceWouldWin) {
    MakeFrench();
    AskFor("fr_FR.utf8");
    EXPECT_THAT(MessageOf<Failure>([&] { const WrittenLanguage language(TheHost().Core()); }),
                testing::AllOf(testing::StartsWith(At("zet.conf") + ": "), testing::HasSubstr("fr_FR.utf8")));
    ExpectThatTheProcessStays();
}

TEST_F(LanguageOfFiles, IsAnyInTheProcessOfACommand) {
    MakeFrench();
    AskFor("fr_FR.utf8");
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EXIT(
        {
            UseReadersLanguage();
            {
                const WrittenLanguage language(TheHost().Core());
                EXPECT_STREQ(WrittenOf("does not exist"), "n'existe pas");
                EXPECT_STREQ(_("does not exist"), "existiert nicht");
            }
            ExpectThatTheProcessStays();
            std::exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
    unsetenv("LC_ALL");
}

TEST_F(LanguageOfFiles, IsNotThatOfWhatTheLibrarySaysMeanwhile) {
    const WrittenLanguage language(TheHost().Core());
    EXPECT_STREQ(_("does not exist"), "existiert nicht");
    EXPECT_STREQ(WrittenOf("does not exist"), "does not exist");
}

TEST_F(LanguageOfFiles, IsNotThatOfWhatTheCoreSaysMeanwhile) {
    {
        const WrittenLanguage language(TheHost().Core());
        bindtextdomain("libzet-core", ZET_CATALOGUES);
        const auto problem = ProblemOfParam("MINIMUM_UID", "x");
        ASSERT_TRUE(problem);
        EXPECT_THAT(problem->text, testing::EndsWith("; erwartet wird eine Zahl"));
        EXPECT_STREQ(WrittenOf("does not exist"), "does not exist");
    }
    EXPECT_EQ(MakeMessagesBy(nullptr), nullptr);
}

TEST_F(LanguageOfFiles, IsOfNoConcernToAThreadThatWritesNone) {
    const WrittenLanguage language(TheHost().Core());
    std::thread([] {
        EXPECT_NE(std::string(_("does not exist")), "");
        EXPECT_TRUE(ProblemOfParam("MINIMUM_UID", "x"));
        EXPECT_STREQ(WrittenOf("does not exist"), "existiert nicht");
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
