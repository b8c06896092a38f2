#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>

#include "Support.h"

namespace ZET::Test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Loader : public HostFixture {
  protected:
    Loader() {
        Start("TRACE=\n");
        ::chmod(m_directory.Path().c_str(), 0755);
    }

    /// A copy of the module where only its owner can write.
    std::string Module(const std::string& name) {
        const std::string path = m_directory / (name + ".so");
        if (!Exists(path)) std::filesystem::copy_file(std::string(MODULE_DIR "/") + name + ".so", path);
        ::chmod(path.c_str(), 0755);
        return path;
    }

    void Load(const std::string& name) { m_host->LoadModule(Module(name)); }

    /// The reason for which the module is refused; nothing of it may be left.
    std::string Refusal(const std::string& path) {
        const std::string message = MessageOf<EZETError>([&] { m_host->LoadModule(path); });
        const std::string start = "Failed to load module '" + path + "': ";
        EXPECT_THAT(message, StartsWith(start));
        EXPECT_FALSE(IsInMemory(path));
        return message.substr(std::min(start.size(), message.size()));
    }

    std::string RefusalOf(const std::string& name) { return Refusal(Module(name)); }

    /// As above, when it was initialised: its code stays.
    std::string LateRefusalOf(const std::string& name) {
        const std::string message = MessageOf<EZETError>([&] { Load(name); });
        const std::string start = "Failed to load module '" + Module(name) + "': ";
        EXPECT_THAT(message, StartsWith(start));
        EXPECT_TRUE(IsInMemory(Module(name)));
        return message.substr(std::min(start.size(), message.size()));
    }

    std::string Trace() { return Core().GetParam("TRACE"); }

    static bool IsInMemory(const std::string& path) {
        // Anything else would not be in memory, and the system's loader waits for a pipe's writer.
        if (!std::filesystem::is_regular_file(path)) return false;
        void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) ::dlclose(handle);
        return handle != nullptr;
    }
};

TEST_F(Loader, LoadedModuleHasItsInterfaceRegistered) {
    Load("Sound");
    ASSERT_NE(m_host->FindInterface("sound"), nullptr);
    EXPECT_EQ(m_host->FindInterface("sound")->GetName(), "sound");
}

TEST_F(Loader, ModuleIsEndedInTheRightOrder) {
    Load("Sound");
    m_host->UnloadModules();
    EXPECT_EQ(Trace(), "sound done;sound interface gone;");
    EXPECT_EQ(m_host->FindInterface("sound"), nullptr);
}

TEST_F(Loader, CodeOfAModuleThatWasInitialisedStaysForWhatMightBeLeftOfIt) {
    Load("Sound");
    m_host->UnloadModules();
    EXPECT_TRUE(IsInMemory(Module("Sound")));
}

TEST_F(Loader, LastModuleIsEndedFirst) {
    Load("Sound");
    Load("Second");
    m_host->UnloadModules();
    EXPECT_EQ(Trace(), "second done;second interface gone;sound done;sound interface gone;");
}

TEST_F(Loader, HostEndsItsModules) {
    Load("Sound");
    const std::weak_ptr<CZETInterface> interface = m_host->FindInterface("sound");
    m_host.reset();
    EXPECT_TRUE(interface.expired());
}

TEST_F(Loader, UnloadedModuleCanBeLoadedAgain) {
    Load("Sound");
    m_host->UnloadModules();
    m_host->UnloadModules();
    Load("Sound");
    EXPECT_NE(m_host->FindInterface("sound"), nullptr);
}

TEST_F(Loader, InterfaceThatTheModuleForgetsIsDroppedBeforeItsCodeGoes) {
    Load("Forgetful");
    m_host->UnloadModules();
    EXPECT_EQ(Trace(), "forgetful done;forgetful interface gone;");
}

TEST_F(Loader, InterfaceThatOutlivesItsModuleIsWarnedOfAndWorks) {
    Load("Sound");
    auto interface = m_host->FindInterface("sound");
    EXPECT_EQ(LoggedBy([&] { m_host->UnloadModules(); }),
              "zet: warning: An interface of module 'sound' is still in use (let it go before the module is "
              "unloaded).\n");
    EXPECT_EQ(m_host->FindInterface("sound"), nullptr);
    EXPECT_EQ(interface->GetName(), "sound");
    interface.reset();
    EXPECT_EQ(Trace(), "sound done;sound interface gone;");
}

TEST_F(Loader, ModuleThatTakesNoNoticeOfATakenNameIsRefusedAndTheOtherInterfaceStays) {
    const auto mine = std::make_shared<CZETInterface>("sound");
    Core().RegisterInterface(mine);
    EXPECT_EQ(LateRefusalOf("IgnoresRefusal"), "there is an interface 'sound' already.");
    EXPECT_EQ(Trace(), "sound interface gone;sound done;") << "what was initialised is ended";
    EXPECT_EQ(m_host->FindInterface("sound"), mine);
    m_host->UnloadModules();
    EXPECT_EQ(m_host->FindInterface("sound"), mine);
}

TEST_F(Loader, ModuleCanBeLoadedOnceTheNameOfItsInterfaceIsFree) {
    Core().RegisterInterface(std::make_shared<CZETInterface>("sound"));
    LateRefusalOf("IgnoresRefusal");
    EXPECT_TRUE(Core().RemoveInterface("sound")) << "names are kept no longer than the refusal";
    Load("IgnoresRefusal");
    EXPECT_NE(m_host->FindInterface("sound"), nullptr);
}

TEST_F(Loader, ModuleThatRegistersNothingIsRefusedAndEnded) {
    EXPECT_EQ(LateRefusalOf("RegistersNothing"), "it registered no interface.");
    EXPECT_EQ(Trace(), "registers-nothing done;");
    EXPECT_EQ(LateRefusalOf("RegistersNothing"), "it registered no interface.");
}

TEST_F(Loader, InterfaceOfAnotherOwnerUnderTheNameOfOneOfTheModuleOutlivesIt) {
    Load("Sound");
    Core().RemoveInterface("sound");
    const auto mine = std::make_shared<CZETInterface>("sound");
    Core().RegisterInterface(mine);
    m_host->UnloadModules();
    EXPECT_EQ(m_host->FindInterface("sound"), mine);
    EXPECT_TRUE(Core().RemoveInterface("sound"));
}

TEST_F(Loader, ModuleServesOneHostAtATime) {
    Load("Sound");
    const auto first = m_host->FindInterface("sound");
    WriteText(m_directory / "other.conf", "TRACE=\n");
    CZETHost other(m_directory / "other.conf");
    const auto mine = std::make_shared<CZETInterface>("sound");
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(MessageOf<EZETError>([&] { other.LoadModule(Module("Sound")); }),
                  "Failed to load module '" + Module("Sound") +
                      "': it serves another host of this process (unload it there first).");
        EXPECT_EQ(other.FindInterface("sound"), nullptr);
    }
    other.GetCore().RegisterInterface(mine);
    other.UnloadModules();
    EXPECT_EQ(other.FindInterface("sound"), mine) << "what somebody else registered";
    other.GetCore().RemoveInterface("sound");
    EXPECT_EQ(m_host->FindInterface("sound"), first);
    EXPECT_EQ(Trace(), "") << "the one that it serves is not concerned";
}

TEST_F(Loader, ModuleServesAnotherHostAfterwards) {
    WriteText(m_directory / "other.conf", "TRACE=\n");
    CZETHost other(m_directory / "other.conf");
    for (int i = 0; i < 2; i++) {
        Load("Sound");
        m_host->UnloadModules();
        other.LoadModule(Module("Sound"));
        EXPECT_NE(other.FindInterface("sound"), nullptr);
        other.UnloadModules();
    }
}

TEST_F(Loader, RefusedModuleIsFreeForAnotherHost) {
    Core().RegisterInterface(std::make_shared<CZETInterface>("sound"));
    LateRefusalOf("IgnoresRefusal");
    WriteText(m_directory / "other.conf", "TRACE=\n");
    CZETHost other(m_directory / "other.conf");
    other.LoadModule(Module("IgnoresRefusal"));
    EXPECT_NE(other.FindInterface("sound"), nullptr);
}

TEST_F(Loader, RecordIsAskedForOnceItsTextsCanBeTranslated) {
    Load("Translated");
    EXPECT_NE(m_host->FindInterface("translated"), nullptr);
}

TEST_F(Loader, ModuleThatFailsToEndIsReportedAndLosesItsInterface) {
    Load("DoneThrows");
    const std::size_t errors = CountLoggedErrors();
    EXPECT_EQ(LoggedBy([&] { m_host->UnloadModules(); }),
              "zet: error: Failed to end module 'done-throws': the end is not the end.\n");
    EXPECT_EQ(CountLoggedErrors(), errors + 1);
    EXPECT_EQ(Trace(), "done-throws done;done-throws interface gone;");
}

TEST_F(Loader, RelativePathIsNotSearchedForInLibraryDirectories) {
    Module("Sound");
    char former[4096];
    ASSERT_NE(::getcwd(former, sizeof former), nullptr);
    ASSERT_EQ(::chdir(m_directory.Path().c_str()), 0);
    m_host->LoadModule("Sound.so");
    EXPECT_THAT(MessageOf<EZETError>([&] { m_host->LoadModule("libc.so.6"); }),
                StartsWith("Failed to load module 'libc.so.6': No such file or directory"));
    ASSERT_EQ(::chdir(former), 0);
    EXPECT_TRUE(IsInMemory(Module("Sound")));
}

TEST_F(Loader, SymbolsOfAModuleStayItsOwn) {
    Load("Sound");
    EXPECT_EQ(::dlsym(RTLD_DEFAULT, "module_init"), nullptr);
}

TEST_F(Loader, MissingFileIsRefused) {
    EXPECT_EQ(Refusal(m_directory / "none.so"), "No such file or directory.");
}

TEST_F(Loader, EmptyPathIsABadArgument) {
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { m_host->LoadModule(""); }),
              "Argument is empty for 'LoadModule'.");
}

TEST_F(Loader, PathWithANulByteIsRefused) {
    EXPECT_EQ(MessageOf<EZETError>([&] { m_host->LoadModule(Module("Sound") + '\0' + "x"); }),
              "Failed to load module '" + Module("Sound") + "\\x00x': the file name holds a NUL byte.");
}

TEST_F(Loader, FileThatIsNoSharedObjectIsRefused) {
    WriteText(m_directory / "text.so", "just a text\n");
    EXPECT_THAT(Refusal(m_directory / "text.so"), HasSubstr("text.so: file too short"));
    WriteText(m_directory / "longer.so", std::string(10'000, 'x'));
    EXPECT_THAT(Refusal(m_directory / "longer.so"), HasSubstr("longer.so: invalid ELF header"));
}

TEST_F(Loader, ProgramIsRefused) {
    std::filesystem::copy_file("/proc/self/exe", m_directory / "program");
    ::chmod((m_directory / "program").c_str(), 0755);
    EXPECT_THAT(Refusal(m_directory / "program"), HasSubstr("cannot dynamically load"));
}

TEST_F(Loader, DirectoryAndPipeAreRefusedAtOnce) {
    EXPECT_EQ(Refusal(m_directory.Path()), "it is not a regular file.");
    ASSERT_EQ(::mkfifo((m_directory / "pipe.so").c_str(), 0600), 0);
    EXPECT_EQ(Refusal(m_directory / "pipe.so"), "it is not a regular file.");
}

TEST_F(Loader, UnresolvedSymbolIsFoundAtOnce) {
    EXPECT_THAT(RefusalOf("UnresolvedSymbol"), HasSubstr("undefined symbol: zet_function_that_nobody_has"));
}

TEST_F(Loader, MissingEntryPointIsNamed) {
    EXPECT_EQ(RefusalOf("NoGetInfo"), "it has no entry point 'get_module_info'.");
    EXPECT_EQ(RefusalOf("NoInit"), "it has no entry point 'module_init'.");
    EXPECT_EQ(RefusalOf("NoDone"), "it has no entry point 'module_done'.");
}

TEST_F(Loader, BadRecordIsRefusedWithTheReason) {
    EXPECT_EQ(RefusalOf("NullRecord"), "it does not serve this host.");
    EXPECT_EQ(RefusalOf("WrongType"), "its record is of type 2, not of a module.");
    EXPECT_EQ(RefusalOf("NullName"), "its record has no name.");
    EXPECT_EQ(RefusalOf("EmptyName"), "its record has no name.");
    EXPECT_EQ(RefusalOf("NoVersion"), "its record has no version.");
    EXPECT_EQ(RefusalOf("OtherContract"), "its record is of version 2, not of 1.");
    EXPECT_EQ(RefusalOf("GetInfoThrows"), "no record today.");
    EXPECT_EQ(Trace(), "") << "none of them was initialised or ended";
}

TEST_F(Loader, ModuleThatFailsToInitialiseIsRefused) {
    EXPECT_EQ(RefusalOf("InitFalse"), "it failed to initialise.");
    EXPECT_EQ(Trace(), "") << "what was not initialised is not ended";
}

TEST_F(Loader, ExceptionOfTheInitialisationIsTheReason) {
    EXPECT_EQ(RefusalOf("InitThrows"), "out of ideas.");
    EXPECT_EQ(RefusalOf("InitThrowsNumber"), "an exception of an unknown kind.");
    EXPECT_EQ(RefusalOf("InitThrowsOwnError"), "an error of the module's own.");
}

TEST_F(Loader, DetailOfAnExceptionOfTheCoreIsKept) {
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

TEST_F(Loader, InterfaceOfAModuleThatFailedIsDropped) {
    EXPECT_EQ(RefusalOf("RegistersThenFails"), "changed its mind.");
    EXPECT_EQ(m_host->FindInterface("sound"), nullptr);
    EXPECT_EQ(Trace(), "sound interface gone;sound unloaded;");
}

TEST_F(Loader, SameModuleIsNotLoadedTwice) {
    Load("Sound");
    const std::string message = MessageOf<EZETError>([&] { Load("Sound"); });
    EXPECT_EQ(message, "Failed to load module '" + Module("Sound") + "': module 'sound' is loaded already.");
    EXPECT_EQ(RefusalOf("Twin"), "module 'sound' is loaded already.");
    EXPECT_NE(m_host->FindInterface("sound"), nullptr);
    m_host->UnloadModules();
    EXPECT_EQ(Trace(), "sound done;sound interface gone;");
}

TEST_F(Loader, RefusedModuleLeavesTheHostUsable) {
    RefusalOf("InitThrows");
    Load("Sound");
    EXPECT_NE(m_host->FindInterface("sound"), nullptr);
}

TEST_F(Loader, FileThatOthersMayWriteIsRefusedByRoot) {
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

TEST_F(Loader, DirectoryThatOthersMayWriteIsRefusedByRoot) {
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

TEST_F(Loader, DirectoryBehindALinkIsTheOneThatCounts) {
    if (!IsRoot()) GTEST_SKIP() << "the rule is for root";
    const TemporaryDirectory open;
    std::filesystem::copy_file(Module("Sound"), open / "Sound.so");
    ASSERT_EQ(::chmod(open.Path().c_str(), 0777), 0);
    ASSERT_EQ(::symlink((open / "Sound.so").c_str(), (m_directory / "link.so").c_str()), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { m_host->LoadModule(m_directory / "link.so"); }),
              "Failed to load module '" + open / "Sound.so" +
                  "': others than root may write its directory, and root runs it.");
}

TEST_F(Loader, OrdinaryUserMayLoadHisOwnModule) {
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
