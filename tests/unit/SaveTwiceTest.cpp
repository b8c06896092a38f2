#include "ModuleTest.h"

namespace ZET {
namespace {

/// Saving leaves the text as it can be read and edited further.
class SaveTwiceTest : public ModuleTest {
  protected:
    void Open(const std::string& text, bool noMarkers) {
        ASSERT_TRUE(m_file.Open(Write("target", text), "client", noMarkers));
    }

    CZETConfigFile m_file{m_core};
};

TEST_F(SaveTwiceTest, SecondSaveWritesTheSameFileWithOneNotice) {
    Open("x=1\n", false);
    m_file.Save(false);
    m_file.Save(false);
    EXPECT_EQ(Read("target"), kPartialNotice + "x=1\n");
    EXPECT_EQ(Read("target.before_zet"), "x=1\n");
}

TEST_F(SaveTwiceTest, SecondSaveWithoutMarkersWritesTheSameFile) {
    Open("x=1\ny", true);
    m_file.Save(true);
    m_file.Save(true);
    EXPECT_EQ(Read("target"), "x=1\ny");
}

TEST_F(SaveTwiceTest, SecondSaveOfATemplateWritesTheSameFile) {
    Write("cfg/t.conf", "a\n" + kTemplateComment + "hidden\n" + kCommentEnd + "b");
    ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path("target"), "client", false));
    for (int time = 0; time < 2; ++time) {
        m_file.Save(false);
        EXPECT_EQ(Read("target"), GeneratedNotice(Path("cfg/t.conf"), "zet-client") + "a\nb");
    }
}

TEST_F(SaveTwiceTest, EditBetweenTwoSavesIsWritten) {
    Open("x=1\n", true);
    m_file.Save(true);
    m_file.SetLine("^x=", "x=2");
    m_file.Save(true);
    EXPECT_EQ(Read("target"), "x=2\n");
}

TEST_F(SaveTwiceTest, EditBetweenTwoSavesWithMarkersStandsBelowTheOneNotice) {
    Open("x=1\n", false);
    m_file.Save(false);
    m_file.SetLine("^x=", "x=2");
    m_file.Save(false);
    EXPECT_EQ(Read("target"), kPartialNotice + kFormer + "x=1\n" + kBegin + "x=2\n" + kEnd);
}

TEST_F(SaveTwiceTest, LookupAfterASaveFindsItsLine) {
    Open("x=1\ny=2", true);
    m_file.Save(true);
    EXPECT_EQ(m_file.GetLine("^y="), "y=2");
    EXPECT_EQ(m_file.GetLine("^x="), "x=1");
}

TEST_F(SaveTwiceTest, LookupAfterASaveSeesTheNotice) {
    Open("x=1\n", false);
    m_file.Save(true);
    EXPECT_EQ(m_file.GetLine("ZET_CONFIG"), "# --ZET_CONFIG_COMMENT--");
}

TEST_F(SaveTwiceTest, MarkersCanBeTakenOutBetweenTwoSaves) {
    Open("x=1\n", false);
    m_file.Save(true);
    m_file.RemoveZETMarkers();
    m_file.SetLine("^x=", "x=3");
    m_file.Save(true);
    EXPECT_EQ(Read("target"), kPartialNotice + kFormer + "x=1\n" + kBegin + "x=3\n" + kEnd);
}

TEST_F(SaveTwiceTest, SaveAfterAFailedSaveWritesTheWholeText) {
    Open("x=1\n", false);
    m_core.FailAt("RenameFile");
    ExpectScriptedFailure("RenameFile", [&] { m_file.Save(false); });
    m_file.Save(false);
    EXPECT_EQ(Read("target"), kPartialNotice + "x=1\n");
    EXPECT_EQ(Names(), (Strings{"target", "target.before_zet"}));
}

}  // namespace
}  // namespace ZET
