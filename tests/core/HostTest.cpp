#include "Support.h"

namespace ZET::Test {
namespace {

class Host : public HostFixture {};

TEST_F(Host, CoreIsTheSameForTheHostsWholeLife) {
    Start("A=1\n");
    IZETCore* core = &m_host->GetCore();
    core->UpdateParam("A", "2");
    EXPECT_EQ(&m_host->GetCore(), core);
    EXPECT_EQ(m_host->GetCore().GetParam("A"), "2");
}

TEST_F(Host, TwoHostsHaveTheirOwnParametersAndInterfaces) {
    Start("A=1\n");
    WriteText(m_directory / "other.conf", "A=2\n");
    CZETHost other(m_directory / "other.conf");
    Core().RegisterInterface(std::make_shared<CZETInterface>("one"));
    EXPECT_EQ(Core().GetParam("A"), "1");
    EXPECT_EQ(other.GetCore().GetParam("A"), "2");
    EXPECT_EQ(other.FindInterface("one"), nullptr);
}

TEST_F(Host, InterfacesEndWithTheHost) {
    auto interface = std::make_shared<CZETInterface>("one");
    const std::weak_ptr<CZETInterface> observer = interface;
    Start("");
    Core().RegisterInterface(std::move(interface));
    m_host.reset();
    EXPECT_TRUE(observer.expired());
}

TEST_F(Host, WithoutAFileTheDefaultsServe) {
    CZETHost host;
    IZETCore& core = host.GetCore();
    EXPECT_EQ(core.GetParam("ZET_CFG"), "");
    EXPECT_EQ(core.GetParam("ZET_CFG_DIR"), "/etc/zet");
    EXPECT_EQ(core.GetDomainName(), "");
    core.UpdateParam("DOMAIN", "example.org");
    EXPECT_EQ(core.GetParam("REALM"), "EXAMPLE.ORG");
}

TEST_F(Host, TakesTheParametersOfAFileThatIsReadAgain) {
    Start("A=1\nB=1\nDOMAIN=example.org\n");
    IZETCore& core = m_host->GetCore();
    auto interface = std::make_shared<CZETInterface>("one");
    core.RegisterInterface(interface);
    core.UpdateParam("C", "1");
    WriteText(m_directory / "other.conf", "A=2\nDOMAIN=example.net\n");
    m_host->TakeParameters(CZETHost(m_directory / "other.conf"));
    EXPECT_EQ(core.GetParam("A"), "2");
    EXPECT_EQ(core.GetParam("REALM"), "EXAMPLE.NET");
    EXPECT_EQ(core.GetParam("ZET_CFG"), m_directory / "other.conf");
    EXPECT_EQ(m_host->GetParams().count("B") + m_host->GetParams().count("C"), 0U);
    EXPECT_EQ(m_host->FindInterface("one"), interface);
    m_host->TakeParameters(CZETHost());
    EXPECT_EQ(core.GetParam("ZET_CFG"), "");
}

TEST_F(Host, NameWithANulByteIsThatOfNoFile) {
    WriteText(m_directory / "a.conf", "A=1\n");
    const std::string name = (m_directory / "a.conf") + std::string("\0b", 2);
    EXPECT_THROW(CZETHost{name}, EZETCheckError);
}

TEST_F(Host, WithoutAFileNoneCanBeNamedLater) {
    CZETHost host;
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { host.GetCore().UpdateParam("ZET_CFG", "/etc/passwd"); }),
              "Parameter 'ZET_CFG' cannot be changed.");
}

}  // namespace
}  // namespace ZET::Test
