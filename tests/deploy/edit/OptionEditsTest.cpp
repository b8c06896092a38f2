#include "deploy/edit/OptionEdits.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "../HostFixture.h"
#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {
namespace {

class OptionEditsTest : public HostFixture {};

TEST_F(OptionEditsTest, DirectoryThatWasSetIsOneOfTheTree) {
    for (const char* name : {"tree/etc", "tree/templates", "tree/state", "tree/cfg", "cfg"})
        std::filesystem::create_directories(At(name));
    Write("tree/zet.conf",
          "DOMAIN=example.org\nZET_CFG_DIR=/etc\nZET_CFG_TEMPL_DIR=/templates\nZET_VAR_LIB_DIR=/state\n");
    m_options.root = At("tree");
    m_options.moduleFile = ZET_MODULE;
    Deployment product("/zet.conf", m_options, m_told);
    SetOption(product, "ZET_CFG_DIR", "/cfg");
    EXPECT_EQ(product.Param("ZET_CFG_DIR"), At("tree/cfg"));
}

}  // namespace
}  // namespace ZET::Deploy
