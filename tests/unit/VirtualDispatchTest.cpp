#include "ModuleTest.h"

namespace ZET {
namespace {

/// Notes which of its operations are called, and lets them do their work unless told otherwise.
class NotingFile : public CZETConfigFile {
  public:
    using CZETConfigFile::CZETConfigFile;

    bool InternalOpen(const std::string& fileName, const std::string& role, bool noMarkers) override {
        calls.push_back("InternalOpen " + fileName + " " + role + (noMarkers ? " bare" : " marked"));
        return opens.value_or(true) && (opens || CZETConfigFile::InternalOpen(fileName, role, noMarkers));
    }
    void InternalNotice() override { calls.push_back("InternalNotice"); }
    std::string Header() override {
        calls.push_back("Header");
        return "# own header";
    }
    void InsertHeader(const std::string& header) override {
        calls.push_back("InsertHeader " + header);
        CZETConfigFile::InsertHeader(header);
    }
    void RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) override {
        calls.push_back("RemoveMarkers " + beginMarker + " " + endMarker);
    }
    void SetLine(const std::string& pattern, const std::string& line) override {
        calls.push_back("SetLine " + pattern + " " + line);
    }
    std::string GetLine(const std::string& pattern) override {
        calls.push_back("GetLine " + pattern);
        return answer;
    }
    void RestoreLine(const std::string& pattern) override { calls.push_back("RestoreLine " + pattern); }

    Strings calls;
    std::optional<bool> opens;
    std::string answer;
};

class VirtualDispatchTest : public ModuleTest {
  protected:
    /// Calls since the file was opened.
    Strings CallsAfterOpening(const std::function<void(IZETConfigFile&)>& act, bool noMarkers = false) {
        NotingFile file(m_core);
        EXPECT_TRUE(file.Open(Write("a.conf", "x=1\n"), "", noMarkers));
        file.calls.clear();
        act(file);
        return file.calls;
    }

    NotingFile m_file{m_core};
};

TEST_F(VirtualDispatchTest, OpenCallsInternalOpenWhichCallsInternalNotice) {
    EXPECT_TRUE(m_file.Open(Write("a.conf", "x\n"), "server", true));
    EXPECT_EQ(Shown(m_file.calls), (Strings{"InternalOpen D/a.conf server bare", "InternalNotice"}));
    EXPECT_EQ(Journal(), Strings{});
}

TEST_F(VirtualDispatchTest, OpenTemplateCallsInternalOpenWithTheTemplatesPath) {
    Write("cfg/t.conf", "x\n");
    EXPECT_TRUE(m_file.OpenTemplate("t.conf", Path("target"), "client", false));
    EXPECT_EQ(Shown(m_file.calls), (Strings{"InternalOpen D/cfg/t.conf client marked", "InternalNotice"}));
}

TEST_F(VirtualDispatchTest, OpenReturnsWhatInternalOpenReturns) {
    for (const bool answer : {true, false}) {
        m_file.opens = answer;
        EXPECT_EQ(m_file.Open("anything", "", false), answer);
        EXPECT_EQ(m_file.OpenTemplate("anything", "target", "", false), answer);
    }
}

TEST_F(VirtualDispatchTest, EmptyNameIsCheckedByInternalOpenOnly) {
    m_file.opens = true;
    EXPECT_TRUE(m_file.Open("", "", false));
}

TEST_F(VirtualDispatchTest, SaveInPlaceCallsHeaderAndInsertHeader) {
    EXPECT_EQ(CallsAfterOpening([](IZETConfigFile& file) { file.Save(true); }),
              (Strings{"Header", "InsertHeader # own header"}));
    EXPECT_EQ(Read("a.conf"), kNotice + "# own header\n" + kCommentEnd + "x=1\n");
}

TEST_F(VirtualDispatchTest, SaveWithoutMarkersCallsNeither) {
    EXPECT_EQ(CallsAfterOpening([](IZETConfigFile& file) { file.Save(true); }, true), Strings{});
}

TEST_F(VirtualDispatchTest, SaveOfATemplateRemovesItsCommentsAfterTheHeader) {
    Write("cfg/t.conf", "x\n");
    ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path("target"), "", false));
    m_file.calls.clear();
    m_file.Save(true);
    EXPECT_EQ(m_file.calls, (Strings{"Header", "InsertHeader # own header",
                                     "RemoveMarkers # --ZET_TEMPLATE_COMMENT-- # --ZET_COMMENT_END--"}));
}

TEST_F(VirtualDispatchTest, SaveOfATemplateWithoutMarkersRemovesItsCommentsToo) {
    Write("cfg/t.conf", "x\n");
    ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path("target"), "", true));
    m_file.calls.clear();
    m_file.Save(true);
    EXPECT_EQ(m_file.calls, Strings{"RemoveMarkers # --ZET_TEMPLATE_COMMENT-- # --ZET_COMMENT_END--"});
}

TEST_F(VirtualDispatchTest, RemoveZETMarkersCallsRemoveMarkersForBlocksThenNotices) {
    EXPECT_EQ(CallsAfterOpening([](IZETConfigFile& file) { file.RemoveZETMarkers(); }),
              (Strings{"RemoveMarkers # ---ZET_BEGIN--- # ----ZET_END----",
                       "RemoveMarkers # --ZET_CONFIG_COMMENT-- # --ZET_COMMENT_END--"}));
}

TEST_F(VirtualDispatchTest, RemoveZETMarkersHasNoCheckOfItsOwn) {
    m_file.RemoveZETMarkers();
    EXPECT_EQ(m_file.calls.size(), 2U);
}

TEST_F(VirtualDispatchTest, SetParamValueCallsSetLine) {
    EXPECT_EQ(CallsAfterOpening([](IZETConfigFile& file) { file.SetParamValue("a.b", "v=1"); }),
              Strings{"SetLine ^#*\\s*a.b= a.b=v=1"});
}

TEST_F(VirtualDispatchTest, GetParamValueCallsGetLineAndCutsItsAnswer) {
    m_file.answer = "anything = x = y";
    EXPECT_EQ(m_file.GetParamValue("n"), " x = y");
    EXPECT_EQ(m_file.calls, Strings{"GetLine ^\\s*n="});
    m_file.answer = "no equals sign";
    EXPECT_EQ(m_file.GetParamValue("n"), "");
    m_file.answer = "";
    EXPECT_EQ(m_file.GetParamValue("n"), "");
}

TEST_F(VirtualDispatchTest, RestoreParamValueCallsRestoreLine) {
    EXPECT_EQ(CallsAfterOpening([](IZETConfigFile& file) { file.RestoreParamValue("n"); }),
              Strings{"RestoreLine #*\\s*n="});
}

TEST_F(VirtualDispatchTest, RefusedParameterNamesReachNoLineOperation) {
    EXPECT_THROW(m_file.SetParamValue("", ""), EZETCheckError);
    EXPECT_THROW(m_file.GetParamValue(""), EZETCheckError);
    EXPECT_THROW(m_file.RestoreParamValue(""), EZETCheckError);
    EXPECT_EQ(m_file.calls, Strings{});
}

}  // namespace
}  // namespace ZET
