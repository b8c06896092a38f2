#ifndef ZET_SESSION_H
#define ZET_SESSION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/GlobalOptions.h"
#include "cli/Names.h"
#include "cli/Report.h"
#include "deploy/targets/Deployment.h"
#include "zet/deploy/Observer.h"

namespace ZET::Cli {

/// One run of a command: the caller's options, the product that does the work, and the report. What the
/// product reports goes into the report.
class Session : private Observer {
  public:
    /// How a command reports a finished file.
    using FileTeller = void (*)(Session& session, const FileOutcome& outcome);

    Session(const GlobalOptions& asked, Report& report);

    /// Sends the recorded change to the system's log.
    ~Session() override;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const GlobalOptions& Asked() const { return m_asked; }
    Report& Out() { return m_report; }

    /// The options for the product. They can be changed until it is first used.
    Options& Wanted() { return m_wanted; }

    /// Created on first use. Throws if a configuration file or module is missing or broken.
    Deployment& Product();

    /// The number of finished files for each result.
    const std::map<FileOutcome::Result, std::size_t>& Results() const { return m_results; }

    /// Reports finished files by `teller` from now on.
    void TellFilesBy(FileTeller teller) { m_teller = teller; }

  private:
    /// Adds the log's warnings and errors to the document.
    class LogInReport {
      public:
        LogInReport(const GlobalOptions& asked, Report& report);
        ~LogInReport();
        LogInReport(const LogInReport&) = delete;
        LogInReport& operator=(const LogInReport&) = delete;
    };

    void Detail(const std::string& text) override { m_report.Detail(text); }
    void Remark(const std::string& text) override { m_report.Remark(text); }
    void Warning(const std::string& text) override { m_report.Warning(text); }
    void Error(const std::string& text, const std::string& lines) override { m_report.Error(text, lines); }
    void Progress(std::size_t done, std::size_t total) override { m_report.Progress(done, total); }
    void Done(const FileOutcome& outcome) override;
    void Recorded(std::int64_t entry) override;
    void Restarts(const std::vector<std::string>& services) override;
    void Reloads(const std::vector<std::string>& services) override;

    void LogChange(std::int64_t entry);

    const GlobalOptions& m_asked;
    Report& m_report;
    LogInReport m_logInReport;
    FileTeller m_teller = nullptr;
    std::map<FileOutcome::Result, std::size_t> m_results;
    std::optional<std::int64_t> m_entry;
    Options m_wanted;
    std::unique_ptr<Deployment> m_product;
};

}  // namespace ZET::Cli

#endif
