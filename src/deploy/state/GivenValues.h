#ifndef ZET_GIVEN_VALUES_H
#define ZET_GIVEN_VALUES_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "deploy/state/ConfFile.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Deploy {

class Host;

/// What the host's files give as values, as it is written there. `HostValues` has which of it counts.
struct GivenValues {
    /// The problems of sources that could not be read, so that nobody knows what they give.
    struct Unread {
        std::vector<Problem> params;
        std::vector<Problem> texts;
    };

    std::vector<GivenParameter> shipped;
    std::vector<GivenParameter> fleet;
    std::vector<GivenParameter> main;
    std::map<std::string, std::string> textFiles;  ///< values of several lines, by placeholder
    StringMap texts;                               ///< of those that could be read, by placeholder
    std::vector<std::string> files;                ///< what root relies on, as far as it exists
    std::vector<Problem> problems;                 ///< also of those that could not be read
    Unread unread;
};

/// The parameter that holds the path of the main file.
inline constexpr char kMainFile[] = "ZET_CFG";

/// Whether the files of the fleet are found by this parameter, so that they cannot give it.
bool LeadsToFleet(const std::string& name);

/// Reads them, each source when it is asked to.
class GivenValuesReader {
  public:
    explicit GivenValuesReader(Host& host) : m_host(host) {}

    const GivenValues& Given() const { return m_given; }

    /// To be called before the parameters of directories are those of a tree.
    void ReadFleet();

    /// Reads the main file as it is now.
    void ReadMain();
    void ReadShipped();
    void ReadTexts();

  private:
    void TakeText(const std::string& name, const std::string& file);
    void Miss(std::vector<Problem>& unread, const Problem& problem);
    std::vector<std::string> NamesInOwn(const std::string& directory, const std::string& suffix);
    std::vector<GivenParameter> ReadConf(const std::string& file);
    std::optional<std::string> ReadText(const std::string& file);

    Host& m_host;
    GivenValues m_given;
};

}  // namespace ZET::Deploy

#endif
