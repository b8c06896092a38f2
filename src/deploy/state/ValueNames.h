#ifndef ZET_VALUE_NAMES_H
#define ZET_VALUE_NAMES_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/state/GivenValues.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The names that a host's files give values: whether they clash with each other, or with the product's.
class ValueNames {
  public:
    /// What is given must outlive the object.
    explicit ValueNames(const GivenValues& given) : m_given(given) {}

    /// To be called once everything is read. What the main file gives is reported with this name of it.
    void Check(const std::string& mainFile);

    /// What `Check` found wrong.
    const std::vector<Problem>& Problems() const { return m_problems; }

    /// The shipped defaults that count.
    const std::vector<GivenParameter>& Shipped() const { return m_shipped; }

    /// The placeholders that have no value since their names clash.
    const std::set<std::string>& Clashing() const { return m_clashing; }

    /// The parameter that makes the placeholder; empty if there is none.
    std::string ParameterOf(const std::string& placeholder) const;

    /// What is wrong with a line that gives this name, without its place; none if all is well.
    std::optional<Problem> ProblemOf(const std::string& name) const;

  private:
    void CheckFleet();
    void CheckShipped();
    std::optional<Problem> ClashOf(const std::string& name) const;
    std::optional<Problem> ClashWithText(const std::string& name) const;
    bool CheckName(const GivenParameter& given, bool isShipped);
    void CheckText(const std::string& name, const std::string& file);
    void AddOf(const GivenParameter& given, const std::string& text, const std::string& remedy);

    const GivenValues& m_given;
    std::string m_mainFile;
    std::vector<GivenParameter> m_shipped;
    std::map<std::string, std::string> m_spelled;  ///< by placeholder: the first parameter that makes it
    std::set<std::string> m_clashing;              ///< placeholders
    std::vector<Problem> m_problems;
};

}  // namespace ZET::Deploy

#endif
