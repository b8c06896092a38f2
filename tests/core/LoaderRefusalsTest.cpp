#include "LoaderFixture.h"

namespace ZET::Test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class LoaderRefusals : public Loader {};

TEST_F(LoaderRefusals, MissingFileIsRefused) {
    EXPECT_EQ(Refusal(m_directory / "none.so"), "No such file or directory.");
}

TEST_F(LoaderRefusals, EmptyPathIsABadArgument) {
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { m_host->LoadModule(""); }),
              "Argument is empty for 'LoadModule'.");
}

TEST_F(LoaderRefusals, PathWithANulByteIsRefused) {
    EXPECT_EQ(MessageOf<EZETError>([&] { m_host->LoadModule(Module("Sound") + '\0' + "x"); }),
              "Failed to load module '" + Module("Sound") + "\\x00x': the file name holds a NUL byte.");
}

TEST_F(LoaderRefusals, FileThatIsNoSharedObjectIsRefused) {
    WriteText(m_directory / "text.so", "just a text\n");
    EXPECT_THAT(Refusal(m_directory / "text.so"), HasSubstr("text.so: file too short"));
    WriteText(m_directory / "longer.so", std::string(10'000, 'x'));
    EXPECT_THAT(Refusal(m_directory / "longer.so"), HasSubstr("longer.so: invalid ELF header"));
}

TEST_F(LoaderRefusals, ProgramIsRefused) {
    std::filesystem::copy_file("/proc/self/exe", m_directory / "program");
    ::chmod((m_directory / "program").c_str(), 0755);
    EXPECT_THAT(Refusal(m_directory / "program"), HasSubstr("cannot dynamically load"));
}

TEST_F(LoaderRefusals, DirectoryAndPipeAreRefusedAtOnce) {
    EXPECT_EQ(Refusal(m_directory.Path()), "it is not a regular file.");
    ASSERT_EQ(::mkfifo((m_directory / "pipe.so").c_str(), 0600), 0);
    EXPECT_EQ(Refusal(m_directory / "pipe.so"), "it is not a regular file.");
}

TEST_F(LoaderRefusals, UnresolvedSymbolIsFoundAtOnce) {
    EXPECT_THAT(RefusalOf("UnresolvedSymbol"), HasSubstr("undefined symbol: zet_function_that_nobody_has"));
}

TEST_F(LoaderRefusals, MissingEntryPointIsNamed) {
    EXPECT_EQ(RefusalOf("NoGetInfo"), "it has no entry point 'get_module_info'.");
    EXPECT_EQ(RefusalOf("NoInit"), "it has no entry point 'module_init'.");
    EXPECT_EQ(RefusalOf("NoDone"), "it has no entry point 'module_done'.");
}

TEST_F(LoaderRefusals, BadRecordIsRefusedWithTheReason) {
    EXPECT_EQ(RefusalOf("NullRecord"), "it does not serve this host.");
    EXPECT_EQ(RefusalOf("WrongType"), "its record is of type 2, not of a module.");
    EXPECT_EQ(RefusalOf("NullName"), "its record has no name.");
    EXPECT_EQ(RefusalOf("EmptyName"), "its record has no name.");
    EXPECT_EQ(RefusalOf("NoVersion"), "its record has no version.");
    EXPECT_EQ(RefusalOf("OtherContract"), "its record is of version 2, not of 1.");
    EXPECT_EQ(RefusalOf("GetInfoThrows"), "no record today.");
    EXPECT_EQ(Trace(), "") << "none of them was initialised or ended";
}

TEST_F(LoaderRefusals, ModuleThatFailsToInitialiseIsRefused) {
    EXPECT_EQ(RefusalOf("InitFalse"), "it failed to initialise.");
    EXPECT_EQ(Trace(), "") << "what was not initialised is not ended";
}

TEST_F(LoaderRefusals, ExceptionOfTheInitialisationIsTheReason) {
    EXPECT_EQ(RefusalOf("InitThrows"), "out of ideas.");
    EXPECT_EQ(RefusalOf("InitThrowsNumber"), "an exception of an unknown kind.");
    EXPECT_EQ(RefusalOf("InitThrowsOwnError"), "an error of the module's own.");
}

TEST_F(LoaderRefusals, DetailOfAnExceptionOfTheCoreIsKept) {
    try {
        Load("InitThrowsCoreError");
        FAIL() << "nothing was thrown";
    } catch (const EZETError& error) {
        EXPECT_EQ(error.GetMessage(),
                  "Failed to load module '" + Module("InitThrowsCoreError") + "': a check failed.");
        EXPECT_EQ(error.GetDetail(), "the detail of it");
    }
    EXPECT_FALSE(IsInMemory(Module("InitThrowsCoreError")));
}

TEST_F(LoaderRefusals, InterfaceOfAModuleThatFailedIsDropped) {
    EXPECT_EQ(RefusalOf("RegistersThenFails"), "changed its mind.");
    EXPECT_EQ(m_host->FindInterface("sound"), nullptr);
    EXPECT_EQ(Trace(), "sound interface gone;sound unloaded;");
}

TEST_F(LoaderRefusals, SameModuleIsNotLoadedTwice) {
    Load("Sound");
    const std::string message = MessageOf<EZETError>([&] { Load("Sound"); });
    EXPECT_EQ(message, "Failed to load module '" + Module("Sound") + "': module 'sound' is loaded already.");
    EXPECT_EQ(RefusalOf("Twin"), "module 'sound' is loaded already.");
    EXPECT_NE(m_host->FindInterface("sound"), nullptr);
    m_host->UnloadModules();
    EXPECT_EQ(Trace(), "sound done;sound interface gone;");
}

TEST_F(LoaderRefusals, RefusedModuleLeavesTheHostUsable) {
    RefusalOf("InitThrows");
    Load("Sound");
    EXPECT_NE(m_host->FindInterface("sound"), nullptr);
}

TEST_F(LoaderRefusals, FileThatOthersMayWriteIsRefusedByRoot) {
    if (!IsRoot()) GTEST_SKIP() << "the rule is for root";
    const std::string path = Module("Sound");
    const std::string reason = "others than root may write the file, and root runs it.";
    ASSERT_EQ(::chmod(path.c_str(), 0775), 0);
    EXPECT_EQ(Refusal(path), reason);
    ASSERT_EQ(::chmod(path.c_str(), 0757), 0);
    EXPECT_EQ(Refusal(path), reason);
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
    ASSERT_EQ(::chown(path.c_str(), kSomeUser, 0), 0);
    EXPECT_EQ(Refusal(path), reason);
}

TEST_F(LoaderRefusals, DirectoryThatOthersMayWriteIsRefusedByRoot) {
    if (!IsRoot()) GTEST_SKIP() << "the rule is for root";
    const std::string path = Module("Sound");
    const std::string reason = "others than root may write its directory, and root runs it.";
    for (const mode_t mode : {0775U, 0757U, 01777U}) {
        ASSERT_EQ(::chmod(m_directory.Path().c_str(), mode), 0);
        EXPECT_EQ(Refusal(path), reason);
    }
    ASSERT_EQ(::chmod(m_directory.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chown(m_directory.Path().c_str(), kSomeUser, 0), 0);
    EXPECT_EQ(Refusal(path), reason);
}

TEST_F(LoaderRefusals, DirectoryBehindALinkIsTheOneThatCounts) {
    if (!IsRoot()) GTEST_SKIP() << "the rule is for root";
    const TemporaryDirectory open;
    std::filesystem::copy_file(Module("Sound"), open / "Sound.so");
    ASSERT_EQ(::chmod(open.Path().c_str(), 0777), 0);
    ASSERT_EQ(::symlink((open / "Sound.so").c_str(), (m_directory / "link.so").c_str()), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { m_host->LoadModule(m_directory / "link.so"); }),
              "Failed to load module '" + open / "Sound.so" +
                  "': others than root may write its directory, and root runs it.");
}

TEST_F(LoaderRefusals, OrdinaryUserMayLoadHisOwnModule) {
    if (!IsRoot()) GTEST_SKIP() << "changes to another user";
    const std::string path = Module("Sound");
    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(m_directory.Path().c_str(), 0777), 0);
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            m_host->LoadModule(path);
            std::_Exit(m_host->FindInterface("sound") != nullptr ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace ZET::Test
