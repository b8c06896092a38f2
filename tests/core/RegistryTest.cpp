#include "Support.h"

namespace ZET::Test {
namespace {

class Registry : public HostFixture {
  protected:
    Registry() { Start(""); }
};

TEST_F(Registry, RegisteredInterfaceIsFoundByItsName) {
    const auto interface = std::make_shared<CZETInterface>("one");
    EXPECT_TRUE(Core().RegisterInterface(interface));
    EXPECT_EQ(m_host->FindInterface("one"), interface);
    EXPECT_EQ(m_host->FindInterface("two"), nullptr);
}

TEST_F(Registry, CoreSharesTheOwnership) {
    auto interface = std::make_shared<CZETInterface>("one");
    const std::weak_ptr<CZETInterface> observer = interface;
    Core().RegisterInterface(interface);
    interface.reset();
    EXPECT_FALSE(observer.expired());
    EXPECT_TRUE(Core().RemoveInterface("one"));
    EXPECT_TRUE(observer.expired());
}

TEST_F(Registry, TakenNameIsRefusedAndTheFirstStays) {
    const auto first = std::make_shared<CZETInterface>("one");
    EXPECT_TRUE(Core().RegisterInterface(first));
    EXPECT_FALSE(Core().RegisterInterface(std::make_shared<CZETInterface>("one")));
    EXPECT_FALSE(Core().RegisterInterface(first));
    EXPECT_EQ(m_host->FindInterface("one"), first);
}

TEST_F(Registry, RemovedNameIsFreeAgain) {
    EXPECT_FALSE(Core().RemoveInterface("one"));
    Core().RegisterInterface(std::make_shared<CZETInterface>("one"));
    EXPECT_TRUE(Core().RemoveInterface("one"));
    EXPECT_EQ(m_host->FindInterface("one"), nullptr);
    EXPECT_TRUE(Core().RegisterInterface(std::make_shared<CZETInterface>("one")));
}

TEST_F(Registry, NoInterfaceAndNoNameAreBadArguments) {
    const std::string message = "Argument is empty for 'RegisterInterface'.";
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { Core().RegisterInterface(nullptr); }), message);
    EXPECT_EQ(
        MessageOf<EZETCheckError>([&] { Core().RegisterInterface(std::make_shared<CZETInterface>("")); }),
        message);
}

TEST_F(Registry, InterfaceMayRemoveAnotherWhenItGoes) {
    struct Chained : CZETInterface {
        explicit Chained(IZETCore& core) : CZETInterface("first"), m_core(core) {}
        ~Chained() override { EXPECT_TRUE(m_core.RemoveInterface("second")); }
        IZETCore& m_core;
    };
    Core().RegisterInterface(std::make_shared<CZETInterface>("second"));
    Core().RegisterInterface(std::make_shared<Chained>(Core()));
    EXPECT_TRUE(Core().RemoveInterface("first"));
    EXPECT_EQ(m_host->FindInterface("second"), nullptr);
}

}  // namespace
}  // namespace ZET::Test
