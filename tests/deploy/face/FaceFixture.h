#ifndef ZET_FACE_FIXTURE_H
#define ZET_FACE_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "zet/deploy/Failure.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

inline void Write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A host with two templates and their targets, and one unmanaged file.
class FaceTest : public testing::Test {
  protected:
    FaceTest() {
        std::string name = testing::TempDir() + "zet-face.XXXXXX";
        m_directory = std::filesystem::canonical(mkdtemp(name.data())).string();
        for (const char* directory : {"etc", "templates", "state", "out"})
            std::filesystem::create_directory(At(directory));
        Write(At("zet.conf"),
              "DOMAIN=example.org\nSERVER=server.example.org\nZET_SYNC=no\nZET_CFG_DIR=" + At("etc") +
                  "\nZET_CFG_TEMPL_DIR=" + At("templates") + "\nZET_VAR_LIB_DIR=" + At("state") + "\n");
        Write(At("templates/one"), "realm ${realm}\n");
        Write(At("templates/two"), "two\n");
        Write(At("templates/targets.toml"), "[templates.\"one\"]\ntarget = \"" + At("out/one") +
                                                "\"\nroles = \"both\"\nrestart = [\"daemon\"]\n"
                                                "[templates.\"two\"]\ntarget = \"" +
                                                At("out/two") + "\"\nroles = \"client\"\n");
        Write(At("file"), "a=1\nb=2\n");
        m_options.moduleFile = ZET_MODULE;
    }

    ~FaceTest() override { std::filesystem::remove_all(m_directory); }

    std::string At(const std::string& name) const { return m_directory + "/" + name; }

    std::string m_directory;
    Options m_options;
};

/// The `Failure` that the call throws.
inline Failure FailureIn(const std::function<void()>& call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << "nothing failed";
    return Failure({.text = "nothing failed"});
}

}  // namespace ZET::Deploy

#endif
