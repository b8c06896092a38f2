#include "LoaderFixture.h"

namespace ZET::Test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

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

}  // namespace
}  // namespace ZET::Test
