#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "LoadedModule.h"
#include "SlotCore.h"
#include "zet/IZETConfig.h"
#include "zet/ZETErrors.h"

namespace ZET {
namespace {

using Strings = std::vector<std::string>;
using FilePointer = std::shared_ptr<IZETConfigFile>;
using Text = const std::string&;

/// The operations of the module's objects, called by their places in the tables of virtual functions.
class SlotsTest : public testing::Test {
  protected:
    SlotsTest() {
        std::string pattern = testing::TempDir() + "zet-module-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
        m_directory = pattern;
        for (const char* name : {"cfg", "templ"})
            std::filesystem::create_directory(Path(name));
        m_core.params = {{"REALM", "R"},
                         {"ZET_CFG_DIR", Path("cfg")},
                         {"ZET_CFG_TEMPL_DIR", Path("templ")},
                         {"ZET_VAR_LIB_DIR", m_directory},
                         {"ZET_CFG", Path("zet.conf")},
                         {"NETWORK_FS_TYPE", "nfs4"}};
        testing::internal::CaptureStderr();
        m_module.init(m_core.Core());
        m_config = m_core.interfaces.at(0).get();
        m_core.calls.clear();
    }

    ~SlotsTest() override {
        m_module.done(m_core.Core());
        testing::internal::GetCapturedStderr();
        std::filesystem::remove_all(m_directory);
    }

    std::string Path(const std::string& name) const { return m_directory + "/" + name; }

    std::string Write(const std::string& name, const std::string& content) const {
        std::ofstream(Path(name)) << content;
        return Path(name);
    }

    std::string Read(const std::string& name) const {
        std::ifstream stream(Path(name));
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    bool Exists(const std::string& name) const { return std::filesystem::exists(Path(name)); }

    FilePointer OpenFile(const std::string& content) {
        return CallSlot<FilePointer, Text, Text, bool>(m_config, 2, Write("f", content), "", true);
    }

    SlotCore m_core;
    LoadedModule m_module;
    void* m_config = nullptr;
    std::string m_directory;
};

TEST_F(SlotsTest, FilesAndTemplatesAreOpenedInPlaces2And3) {
    EXPECT_NE(OpenFile("x=1\n"), nullptr);
    EXPECT_EQ((CallSlot<FilePointer, Text, Text, bool>(m_config, 2, Path("none"), "", false)), nullptr);
    Write("cfg/t", "y\n");
    const auto file =
        CallSlot<FilePointer, Text, Text, Text, bool>(m_config, 3, "t", Path("target"), "server", false);
    ASSERT_NE(file, nullptr);
    file->Save(true);
    EXPECT_NE(Read("target").find("\n# $ zet-init commit-config\n"), std::string::npos);
}

TEST_F(SlotsTest, ValuesAreRebuiltAndHandedOutInPlaces4And5) {
    m_core.params["REALM"] = "NEW";
    CallSlot<void>(m_config, 4);
    EXPECT_EQ(m_core.calls.front(), "7 REALM");
    StringMap& values = CallSlot<StringMap&>(m_config, 5);
    EXPECT_EQ(values.at("${realm}"), "NEW");
    EXPECT_EQ(values.size(), 15U);
}

TEST_F(SlotsTest, TemplatesAreInstalledAndProcessedInPlaces6And7) {
    Write("templ/t", "${realm} ${mine}\n");
    CallSlot<void, Text>(m_config, 6, "t");
    EXPECT_EQ(Read("cfg/t"), "${realm} ${mine}\n");
    StringMap extra = {{"${mine}", "1"}};
    CallSlot<void, Text, Text, Text, StringMap*>(m_config, 7, "t", Path("target"), "client", &extra);
    EXPECT_TRUE(Read("target").ends_with("\nR 1\n"));
}

TEST_F(SlotsTest, FilesAreReservedRestoredAndForgottenInPlaces8To10) {
    Write("f", "original\n");
    CallSlot<void, Text>(m_config, 8, Path("f"));
    EXPECT_EQ(Read("f.before_zet"), "original\n");
    Write("f", "edited\n");
    CallSlot<void, Text>(m_config, 9, Path("f"));
    EXPECT_EQ(Read("f"), "original\n");
    CallSlot<void, Text>(m_config, 8, Path("f"));
    CallSlot<void, Text>(m_config, 10, Path("f"));
    EXPECT_FALSE(Exists("f.before_zet"));
}

TEST_F(SlotsTest, MarkersAreRemovedInPlace11) {
    Write("f", "a\n# ---ZET_BEGIN---\nb\n# ----ZET_END----\n");
    CallSlot<void, Text>(m_config, 11, Path("f"));
    EXPECT_TRUE(Read("f").ends_with("--\na\n"));
}

TEST_F(SlotsTest, MainConfigurationIsUpdatedInPlace12) {
    EXPECT_FALSE((CallSlot<bool, Text, Text>(m_config, 12, "x", "2")));
    Write("zet.conf", "x=1\n");
    EXPECT_TRUE((CallSlot<bool, Text, Text>(m_config, 12, "x", "2")));
    EXPECT_EQ(Read("zet.conf"), "x=2\n");
    EXPECT_EQ(m_core.calls.back(), "8 x=2");
}

TEST_F(SlotsTest, ValuesAreReadAskedForAndSetInPlaces13To15) {
    EXPECT_EQ((CallSlot<std::string, Text>(m_config, 13, "${realm}")), "R");
    EXPECT_FALSE((CallSlot<bool, Text>(m_config, 14, "${mine}")));
    CallSlot<void, Text, Text>(m_config, 15, "${mine}", "1");
    EXPECT_TRUE((CallSlot<bool, Text>(m_config, 14, "${mine}")));
    EXPECT_EQ((CallSlot<std::string, Text>(m_config, 13, "${mine}")), "1");
}

TEST_F(SlotsTest, StatusIsSavedFoundRemovedAndLoadedInPlaces16To19) {
    CallSlot<void, Text>(m_config, 16, "server");
    EXPECT_EQ(m_core.calls.back(), "10");
    EXPECT_EQ(Read("zet-server.status"), "status=1\n");
    EXPECT_TRUE((CallSlot<bool, Text>(m_config, 17, "server")));
    StringMap values;
    CallSlot<void, Text, StringMap&>(m_config, 19, "server", values);
    EXPECT_EQ(values, (StringMap{{"status", "1"}}));
    CallSlot<void, Text>(m_config, 18, "server");
    EXPECT_FALSE((CallSlot<bool, Text>(m_config, 17, "server")));
}

TEST_F(SlotsTest, FileServerStatusIsSavedReadAndRemovedInPlaces20To22) {
    CallSlot<void>(m_config, 20);
    EXPECT_EQ(Read("zet-client-fs.status"), "NETWORK_FS_TYPE=nfs4\n");
    EXPECT_EQ(CallSlot<std::string>(m_config, 21), "nfs4");
    CallSlot<void>(m_config, 22);
    EXPECT_FALSE(Exists("zet-client-fs.status"));
}

TEST_F(SlotsTest, DestructorStandsInTheFirstPlacesOfTheManager) {
    const std::weak_ptr<CZETInterface> object = m_core.interfaces[0];
    m_module.done(m_core.Core());
    EXPECT_TRUE(object.expired());
    m_module.init(m_core.Core());
}

TEST_F(SlotsTest, TextIsChangedInPlaces2To4OfAFile) {
    const FilePointer file = OpenFile("${a}\n(\nb\n)\n# ---ZET_BEGIN---\nc\n# ----ZET_END----\nd\n");
    StringMap values = {{"${a}", "1"}};
    CallSlot<void, StringMap&>(file.get(), 2, values);
    CallSlot<void, Text, Text>(file.get(), 3, "(", ")");
    CallSlot<void>(file.get(), 4);
    CallSlot<void, bool>(file.get(), 11, true);
    EXPECT_EQ(Read("f"), "1\nd\n");
}

TEST_F(SlotsTest, ParametersAreSetReadAndRestoredInPlaces5To7OfAFile) {
    const FilePointer file = OpenFile("a\nx=1\n");
    CallSlot<void, Text, Text>(file.get(), 5, "x", "2");
    EXPECT_EQ(m_core.calls.back(), "9 ^#*\\s*x= in x=1");
    EXPECT_EQ((CallSlot<std::string, Text>(file.get(), 6, "x")), "2");
    EXPECT_EQ(m_core.calls.back(), "9 ^\\s*x= in x=2");
    CallSlot<void, Text>(file.get(), 7, "x");
    EXPECT_EQ(m_core.calls.back(), "9 ^# --PRE-ZET-- #*\\s*x= in x=2");
}

TEST_F(SlotsTest, LinesAreSetReadAndRestoredInPlaces8To10OfAFile) {
    const FilePointer file = OpenFile("a\nx=1\n");
    CallSlot<void, Text, Text>(file.get(), 8, "p", "x=2");
    EXPECT_EQ(m_core.calls.back(), "9 p in x=1");
    EXPECT_EQ((CallSlot<std::string, Text>(file.get(), 9, "q")), "x=2");
    EXPECT_EQ(m_core.calls.back(), "9 q in x=2");
    CallSlot<void, Text>(file.get(), 10, "^r");
    EXPECT_EQ(m_core.calls.back(), "9 ^# --PRE-ZET-- r in x=2");
}

TEST_F(SlotsTest, FileIsSavedInPlace11) {
    const FilePointer file = OpenFile("x\n");
    CallSlot<void, bool>(file.get(), 11, false);
    EXPECT_TRUE(Exists("f.before_zet"));
}

TEST_F(SlotsTest, FileIsOpenedInPlaces0And1) {
    const FilePointer file = OpenFile("x\n");
    EXPECT_FALSE((CallSlot<bool, Text, Text, bool>(file.get(), 0, Path("none"), "", false)));
    EXPECT_THROW((CallSlot<bool, Text, Text, Text, bool>(file.get(), 1, "t", "", "", false)), EZETCheckError);
}

// The destructor has the places 12 and 13 between `Save` and the four operations of the class itself.
TEST_F(SlotsTest, OperationsOfTheClassItselfFollowTheDestructorOfAFile) {
    const FilePointer file = OpenFile("x\n");
    CallSlot<void>(file.get(), 14);
    CallSlot<void, Text>(file.get(), 15, "# H");
    EXPECT_THROW((CallSlot<void, Text>(file.get(), 15, "")), EZETCheckError);
    EXPECT_THROW((CallSlot<bool, Text, Text, bool>(file.get(), 16, "", "", false)), EZETCheckError);
    EXPECT_TRUE(CallSlot<std::string>(file.get(), 17).starts_with("# This file is partially modified"));
    CallSlot<void, bool>(file.get(), 11, true);
    EXPECT_EQ(Read("f"), "# --ZET_CONFIG_COMMENT--\n# H\n# --ZET_COMMENT_END--\nx\n");
}

TEST_F(SlotsTest, ErrorsOfTheModuleAreCaughtAsTheCoresClasses) {
    try {
        CallSlot<bool, Text>(m_config, 17, "router");
        ADD_FAILURE() << "nothing thrown";
    } catch (const EZETInternalError& error) {
        EXPECT_STREQ(error.what(), "Invalid mode 'router'.");
        EXPECT_EQ(error.GetFunction(), "ConfigStatusName");
    }
}

}  // namespace
}  // namespace ZET
