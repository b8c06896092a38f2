#include "Player.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <functional>

#include "Expansion.h"
#include "Matcher.h"
#include "PlainEngine.h"
#include "RecordingCore.h"
#include "Sandbox.h"
#include "ZETConfigFile.h"
#include "zet/ZETErrors.h"

namespace ZET {

namespace {

Sandbox& TheSandbox() {
    static Sandbox sandbox;
    return sandbox;
}

/// Files cannot grow beyond a size, as on a full disk.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(const Fault& fault) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        if (fault.kind != Fault::Kind::FileSize) return;
        const rlimit limit = {fault.count, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit m_before = {};
};

void SetUpCore(RecordingCore& core, const Scenario& scenario) {
    core.SetParam("ZET_CFG_DIR", TheSandbox().ConfigDirectory() + scenario.configDirectorySuffix);
    core.SetMatcher(IsFoundQuickly);
    if (scenario.headerIsTranslated) {
        core.SetTranslation(
            "# This file is partially modified by zet(7).\n"
            "# Do not edit data between ZET_BEGIN and ZET_END labels manually\n"
            "# unless you know what you are doing.\n"
            "# These lines are updated automatically by zet-init(1) and zet-client(1).\n",
            scenario.translatedHeader);
    }
    if (scenario.fault.kind == Fault::Kind::Call) core.FailAt(scenario.fault.call, scenario.fault.count);
    if (scenario.fault.kind == Fault::Kind::NoFormat) core.RefuseToFormat();
}

template <typename Engine>
class Player {
  public:
    explicit Player(const Scenario& scenario) : m_scenario(scenario), m_values(scenario.values) {
        SetUpCore(m_core, scenario);
    }

    Report Play(const std::function<bool(std::size_t, const Engine&)>& mayTake) {
        const mode_t before = umask(m_scenario.mask);
        m_isOpen = Try([&] { return Open(); });
        Note(m_isOpen ? "open" : "not open");
        for (std::size_t step = 0; step < m_scenario.operations.size(); ++step) {
            if (mayTake(step, m_engine)) {
                Take(m_scenario.operations[step]);
            } else {
                m_report.leftOut.insert(step);
            }
        }
        Note("mask " + std::to_string(umask(before)));
        Note("values " + std::to_string(m_values == m_scenario.values));
        return std::move(m_report);
    }

  private:
    bool Open() {
        const Sandbox& sandbox = TheSandbox();
        const std::string fileName = m_scenario.fileNameIsEmpty ? "" : sandbox.FileName();
        const std::string templateName = m_scenario.templateNameIsEmpty ? "" : sandbox.TemplateName();
        switch (m_scenario.opening) {
            case Scenario::Opening::Never:
                return false;
            case Scenario::Opening::InPlace:
                return m_engine.Open(fileName, m_scenario.role, m_scenario.noMarkers);
            case Scenario::Opening::Template:
                return m_engine.OpenTemplate(templateName, fileName, m_scenario.role, m_scenario.noMarkers);
        }
        return false;
    }

    // What must not be done with a file that is not open is not done.
    void Take(const Operation& operation) {
        using Kind = Operation::Kind;
        const bool needsNoFile = operation.kind == Kind::ApplyTemplates ||
                                 operation.kind == Kind::RemoveMarkers ||
                                 operation.kind == Kind::RemoveZETMarkers;
        if (!m_isOpen && !needsNoFile) return;
        const bool isDone = Try([&] {
            Perform(operation);
            return true;
        });
        if (operation.kind != Kind::Save) return;
        Note(TheSandbox().Snapshot());
        if (isDone && TheSandbox().HasTemporary()) m_report.leavesTemporary = true;
    }

    void Perform(const Operation& operation) {
        using Kind = Operation::Kind;
        const auto& [kind, first, second, noBackup] = operation;
        switch (kind) {
            case Kind::ApplyTemplates:
                return m_engine.ApplyTemplates(m_values);
            case Kind::RemoveMarkers:
                return m_engine.RemoveMarkers(first, second);
            case Kind::RemoveZETMarkers:
                return m_engine.RemoveZETMarkers();
            case Kind::SetParamValue:
                return m_engine.SetParamValue(first, second);
            case Kind::GetParamValue:
                return Note("value " + m_engine.GetParamValue(first));
            case Kind::RestoreParamValue:
                return m_engine.RestoreParamValue(first);
            case Kind::SetLine:
                return m_engine.SetLine(first, second);
            case Kind::GetLine:
                return Note("line " + m_engine.GetLine(first));
            case Kind::RestoreLine:
                return m_engine.RestoreLine(first);
            case Kind::InsertHeader:
                return m_engine.InsertHeader(first);
            case Kind::Save: {
                const FileSizeLimit limit(m_scenario.fault);
                return m_engine.Save(noBackup);
            }
        }
    }

    bool Try(const std::function<bool()>& action) {
        bool result = false;
        std::string thrown;
        try {
            result = action();
        } catch (const EZETCheckError& error) {
            thrown = "check error " + error.GetMessage() + " (" + error.GetDetail() + ")";
        } catch (const EZETInternalError& error) {
            thrown = "internal error " + error.GetMessage() + " (" + error.GetDetail() + ")";
        } catch (const EZETError& error) {
            thrown = "error " + error.GetMessage() + " (" + error.GetDetail() + ")";
        } catch (const ScriptedFailure& failure) {
            thrown = "fault " + failure.call;
        }
        CollectCalls();
        if (!thrown.empty()) Note(thrown);
        return result;
    }

    void CollectCalls() {
        for (const std::string& entry : m_core.Journal())
            Note(entry);
        for (const RecordedMessage& message : m_core.Messages())
            Note("message " + message.domain + " " + message.source + " " + message.function + " " +
                 std::to_string(message.count) + " " + message.format);
        m_core.Forget();
    }

    void Note(const std::string& event) { m_report.events.push_back(event); }

    const Scenario& m_scenario;
    StringMap m_values;
    RecordingCore m_core;
    Engine m_engine{m_core};
    bool m_isOpen = false;
    Report m_report;
};

void Count(Report& report) {
    report.tally.endlessExpansions = report.leftOut.size();
    for (const std::string& event : report.events) {
        report.tally.warnings += event.starts_with("Put 1 ");
        report.tally.exceptions += event.starts_with("check error ") || event.starts_with("error ");
    }
}

std::string Excerpt(const std::vector<std::string>& events, std::size_t at) {
    if (at >= events.size()) return "  (nothing more)\n";
    return "  " + Quoted(events[at]) + "\n";
}

}  // namespace

Tally& Tally::operator+=(const Tally& other) {
    expansions += other.expansions;
    endlessExpansions += other.endlessExpansions;
    exhaustedSteps += other.exhaustedSteps;
    exceptions += other.exceptions;
    warnings += other.warnings;
    foreignFiles += other.foreignFiles;
    return *this;
}

Report PlayPlain(const Scenario& scenario) {
    TheSandbox().Prepare(scenario);
    Tally met;
    Player<PlainConfigFile> player(scenario);
    Report report = player.Play([&](std::size_t step, const PlainConfigFile& engine) {
        met.exhaustedSteps += engine.IsExhausted();
        if (scenario.operations[step].kind != Operation::Kind::ApplyTemplates) return true;
        ++met.expansions;
        return ExpansionEnds(engine.ReadableText(), scenario.values);
    });
    report.tally = met;
    const bool isInPlace = scenario.opening == Scenario::Opening::InPlace;
    report.tally.foreignFiles = isInPlace ? scenario.source.isForeign : scenario.target.isForeign;
    Count(report);
    return report;
}

Report PlayReal(const Scenario& scenario, const std::set<std::size_t>& leftOut) {
    TheSandbox().Prepare(scenario);
    Player<CZETConfigFile> player(scenario);
    return player.Play([&](std::size_t step, const CZETConfigFile&) { return !leftOut.contains(step); });
}

std::string Difference(const Scenario& scenario) {
    const Report plain = PlayPlain(scenario);
    const Report real = PlayReal(scenario, plain.leftOut);
    if (real.leavesTemporary) return "A save that succeeded leaves its temporary file behind\n";
    if (plain.events == real.events) return "";
    std::size_t at = 0;
    while (at < plain.events.size() && at < real.events.size() && plain.events[at] == real.events[at])
        ++at;
    std::string text = "After the same events\n";
    for (std::size_t before = at < 5 ? 0 : at - 5; before < at; ++before)
        text += Excerpt(plain.events, before);
    return text + "the plain engine gives\n" + Excerpt(plain.events, at) + "and the real one\n" +
           Excerpt(real.events, at);
}

std::string TextWrittenBack(const std::string& text) {
    Scenario scenario;
    scenario.source = {Place::Kind::Regular, text, 0644};
    TheSandbox().Prepare(scenario);
    RecordingCore core;
    CZETConfigFile file(core);
    if (!file.Open(TheSandbox().FileName(), "", true)) return "(not opened)";
    file.Save(true);
    return TheSandbox().TextOfFile();
}

}  // namespace ZET
