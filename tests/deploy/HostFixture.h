#ifndef ZET_HOST_FIXTURE_H
#define ZET_HOST_FIXTURE_H

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "deploy/state/Host.h"

namespace ZET::Deploy {

/// Keeps what is reported.
class Told : public Observer {
  public:
    void Remark(const std::string& text) override { remarks.push_back(text); }
    void Warning(const std::string& text) override { warnings.push_back(text); }
    bool IsCancelled() override { return isCancelled; }

    std::vector<std::string> remarks;
    std::vector<std::string> warnings;
    bool isCancelled = false;
};

/// A host in a temporary directory: a main file, and the directories of working copies, templates and state.
/// No module is loaded.
class HostFixture : public testing::Test {
  protected:
    HostFixture() {
        std::string name = testing::TempDir() + "zet-host.XXXXXX";
        m_directory = std::filesystem::canonical(mkdtemp(name.data())).string();
        for (const char* directory : {"etc", "templates", "state", "out"})
            std::filesystem::create_directory(At(directory));
        Write("zet.conf", "DOMAIN=example.org\n" + Directories());
    }

    ~HostFixture() override { std::filesystem::remove_all(m_directory); }

    std::string Directories() const {
        return "ZET_CFG_DIR=" + At("etc") + "\nZET_CFG_TEMPL_DIR=" + At("templates") +
               "\nZET_VAR_LIB_DIR=" + At("state") + "\n";
    }

    std::string At(const std::string& name) const { return m_directory + "/" + name; }

    void Write(const std::string& name, const std::string& text, mode_t mode = 0644) const {
        std::ofstream(At(name), std::ios::binary) << text;
        ASSERT_EQ(chmod(At(name).c_str(), mode), 0) << At(name);
    }

    std::string Read(const std::string& name) const {
        std::ifstream file(At(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Adds a template, and a target of its name below "out".
    void AddTarget(const std::string& name, const std::string& lines = "") {
        m_list += "[templates.\"" + name + "\"]\ntarget = \"" + At("out/" + name) + "\"\nroles = \"both\"\n" +
                  lines + "\n";
        Write("templates/targets.toml", m_list);
        Write("templates/" + name, "text of the template " + name + "\n");
    }

    /// Created on first use, with the options of that time.
    Host& TheHost() {
        if (!m_host) m_host = std::make_unique<Host>(At("zet.conf"), m_options, m_told);
        return *m_host;
    }

    /// The host as another run finds it.
    Host& AnotherRun() {
        m_host.reset();
        return TheHost();
    }

    /// Leaves the file as a commit of the role would: recorded, and with a reserve.
    void Commit(const std::string& name, Role role) {
        if (!std::filesystem::exists(At(name))) Write(name, "text");
        Write(name + ".before_zet", "former");
        FileToRecord file;
        file.file.path = At(name);
        file.file.kind = FileKind::Target;
        file.file.after.exists = true;
        file.file.after.mode = 0644;
        file.file.after.knowledge.roles = {role};
        file.textAfter = Read(name);
        TheHost().HostHistory().ToRecord().Remember({file});
    }

    StateDirectory State() const { return StateDirectory(At("state")); }

    Options m_options;
    Told m_told;

  private:
    std::string m_directory;
    std::string m_list;
    std::unique_ptr<Host> m_host;
};

/// The message of the `Error` that the call threw; empty if it threw none.
template <typename Error, typename Call>
std::string MessageOf(Call call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

}  // namespace ZET::Deploy

#endif
