#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "ModuleTest.h"
#include "ZETConfig.h"
#include "ZETOpenedFile.h"

namespace ZET {
namespace {

class TellTextTest : public ModuleTest {
  protected:
    static std::string TextOf(IZETTextToSave& file) {
        std::string told;
        int count = 0;
        file.TellText([&](std::string_view text) {
            told = text;
            count++;
        });
        EXPECT_EQ(count, 1);
        return told;
    }

    /// With notices, comments and blocks, and without; ended and not.
    static std::vector<std::string> Texts() {
        return {"",
                "\n\n",
                "x=1",
                "x=1\n",
                kTemplateComment + "hidden\n" + kCommentEnd + "${a}\n",
                kNotice + "of old\n" + kCommentEnd + "x=${a}\n",
                "a\n" + kTemplateComment + "to the end\n",
                "a\n" + kBegin + "b\n" + kEnd + "${none}"};
    }
};

TEST_F(TellTextTest, TextOfATemplateIsWhatSavingItWrites) {
    StringMap values = {{"${a}", "1"}};
    for (const std::string& text : Texts()) {
        for (const bool noMarkers : {false, true}) {
            Write("cfg/t.conf", text);
            CZETOpenedFile told(m_core);
            CZETOpenedFile saved(m_core);
            for (CZETConfigFile* const file : {&told, &saved}) {
                ASSERT_TRUE(file->OpenTemplate("t.conf", Path("target"), "server", noMarkers));
                file->ApplyTemplates(values);
            }
            saved.Save(true);
            EXPECT_EQ(TextOf(told), Read("target")) << text;
        }
    }
}

TEST_F(TellTextTest, TextOfAFileEditedInPlaceIsWhatSavingItWrites) {
    for (const std::string& text : Texts()) {
        for (const bool noMarkers : {false, true}) {
            CZETOpenedFile told(m_core);
            CZETOpenedFile saved(m_core);
            for (CZETConfigFile* const file : {&told, &saved}) {
                ASSERT_TRUE(file->Open(Write("target", text), "client", noMarkers));
                file->SetParamValue("x", "2");
            }
            saved.Save(true);
            EXPECT_EQ(TextOf(told), Read("target")) << text;
        }
    }
}

TEST_F(TellTextTest, NoFileIsLookedAtOrWritten) {
    Write("cfg/t.conf", "x=1\n");
    CZETOpenedFile file(m_core);
    ASSERT_TRUE(file.OpenTemplate("t.conf", Path("target"), "server", false));
    m_core.Forget();
    TextOf(file);
    EXPECT_EQ(Journal({"IsFileExist", "CreateFile", "RemoveFile", "RenameFile", "CopyFile"}),
              std::vector<std::string>());
    EXPECT_EQ(Names(), std::vector<std::string>());
}

TEST_F(TellTextTest, FileCanBeToldAgainAndSavedAfterwards) {
    CZETOpenedFile file(m_core);
    ASSERT_TRUE(file.Open(Write("target", "x=1\n"), "server", false));
    const std::string text = TextOf(file);
    EXPECT_EQ(TextOf(file), text);
    file.Save(true);
    EXPECT_EQ(Read("target"), text);
}

TEST_F(TellTextTest, ExceptionOfTheReaderPassesThrough) {
    CZETOpenedFile file(m_core);
    ASSERT_TRUE(file.Open(Write("target", "x=1\n"), "server", false));
    EXPECT_THROW(file.TellText([](std::string_view) { throw std::range_error("enough"); }), std::range_error);
    EXPECT_NE(TextOf(file), "");
}

TEST_F(TellTextTest, FilesThatAreHandedOutTellTheirText) {
    CZETConfig config(m_core);
    Write("cfg/t.conf", "x=1\n");
    for (const std::shared_ptr<IZETConfigFile>& file :
         {config.OpenConfigFile(Write("target", "x=1\n"), "server", false),
          config.OpenConfigFileTemplate("t.conf", Path("target"), "server", false)}) {
        auto* const told = dynamic_cast<IZETTextToSave*>(file.get());
        ASSERT_NE(told, nullptr);
        EXPECT_THAT(TextOf(*told), testing::EndsWith("x=1\n"));
    }
}

}  // namespace
}  // namespace ZET
