#ifndef ZET_HOST_VALUES_H
#define ZET_HOST_VALUES_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/state/ConfFile.h"
#include "deploy/state/GivenValues.h"
#include "deploy/state/ValueNames.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Deploy {

class Host;

/// Where the values of a host come from. A later source wins over those before it: the defaults that come
/// with the shipped templates (`values.conf` beside them), those of a fleet (`defaults.d/*.conf` in
/// ZET_CFG_DIR) and the main file. A value of several lines is a file of its own (`values.d/NAME` in
/// ZET_CFG_DIR).
///
/// A check reports what is wrong in a source; it is otherwise left out, so that it stops no command that
/// could mend it.
class HostValues {
  public:
    explicit HostValues(Host& host)
        : m_host(host), m_reader(host), m_given(m_reader.Given()), m_names(m_given) {}
    HostValues(const HostValues&) = delete;
    HostValues& operator=(const HostValues&) = delete;

    /// Gives the core those parameters of the fleet that the main file does not have.
    void TakeDefaults();

    /// Whether the fleet cannot give this parameter: its files are found by it, or the caller has given it.
    bool IsFixed(const std::string& name) const;

    /// The values that the product does not have itself, by placeholder: "${ntp_server}".
    const StringMap& Own();

    /// Every parameter with its value, whichever source has it.
    StringMap Params();

    /// Where a parameter, or a value of several lines, is given.
    struct Source {
        std::string file;
        int line = 0;  ///< 0: the whole file
    };

    /// None if it has the product's default.
    std::optional<Source> SourceOfParam(const std::string& name);
    std::optional<Source> SourceOfPlaceholder(const std::string& placeholder);

    /// What the sources below the main file, which wins over them, give as the parameter.
    std::optional<GivenParameter> GivenBelowMain(const std::string& name);

    /// What is wrong in the sources: faulty lines, clashing names, files that hold no value.
    std::vector<Problem> Problems();

    /// The problems of sources that could not be read.
    using Unread = GivenValues::Unread;
    const Unread& UnreadSources();

    /// What a check would report of a line that gives this name, without its place; none if all is well.
    std::optional<Problem> ProblemOfName(const std::string& name);

    /// The parameters that the fleet's defaults give, and those that the main file gives.
    const std::vector<GivenParameter>& GivenByFleet() const { return m_given.fleet; }
    const std::vector<GivenParameter>& GivenByMain();

    /// The placeholders that have no value since their names clash.
    const std::set<std::string>& Clashing();

    /// The files of values of several lines, by placeholder.
    const std::map<std::string, std::string>& ValueFiles();

    /// The files and directories that root relies on, as far as they exist.
    std::vector<std::string> Files();

    /// Notes that the caller gives the parameter a value, whatever the host's files say.
    void Assume(const GivenParameter& given) { m_assumed.push_back(given); }

    const std::vector<GivenParameter>& Assumed() const { return m_assumed; }

    /// To be called when parameters have changed.
    void Forget() { m_own.reset(); }

  private:
    void ReadRest();

    Host& m_host;
    bool m_isRead = false;
    GivenValuesReader m_reader;
    const GivenValues& m_given;
    ValueNames m_names;
    std::vector<GivenParameter> m_assumed;
    std::optional<StringMap> m_own;
};

}  // namespace ZET::Deploy

#endif
