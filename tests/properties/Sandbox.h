#ifndef ZET_TESTS_SANDBOX_H
#define ZET_TESTS_SANDBOX_H

#include <string>

#include "Scenario.h"

namespace ZET {

/// The directory in which scenarios are played, in memory if possible. Every play of a scenario starts from
/// the same files with the same names.
class Sandbox {
  public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    void Prepare(const Scenario& scenario);

    /// All files, each with its kind, mode, owner and bytes.
    std::string Snapshot() const;

    bool HasTemporary() const;

    std::string TextOfFile() const;

    std::string ConfigDirectory() const { return m_root + "/templates"; }
    std::string TemplateName() const { return "template.conf"; }
    std::string FileName() const { return m_root + "/etc/file.conf"; }

  private:
    static void Put(const std::string& path, const Place& place);
    static void Make(const std::string& path, const Place& place);

    std::string m_root;
};

}  // namespace ZET

#endif
