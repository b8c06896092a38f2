#include "deploy/targets/ConditionCheck.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "deploy/host/Words.h"
#include "deploy/lists/ConditionValues.h"
#include "deploy/state/ParameterNames.h"
#include "deploy/targets/UsedPlaceholders.h"
#include "text/Joined.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

template <typename Take>
void ForEachCondition(const TargetList& list, const Take& take) {
    const auto takeOf = [&](const ListEntry& entry) {
        if (!entry.when.parameter.empty() && !entry.isStray) take(entry);
    };
    for (const Target& target : list.targets)
        takeOf(target);
    for (const ListedEdit& edit : list.edits)
        takeOf(edit);
}

bool IsFlag(const std::string& name, const std::string& value) {
    return MeaningOf(name, value).has_value();
}

/// A digit may also count something.
bool IsDigit(const std::string& value) {
    return value == "0" || value == "1";
}

/// The value without what is easily mistaken: capitals and the blanks around it. Unlike the text of a line, a
/// value may also end with line feeds: it may come from a file of values.
std::string Plain(const std::string& value) {
    constexpr char kBlanks[] = " \t\v\f\r\n";
    const std::size_t begin = std::min(value.find_first_not_of(kBlanks), value.size());
    std::string plain = value.substr(begin, value.find_last_not_of(kBlanks) + 1 - begin);
    for (char& c : plain)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return plain;
}

using Values = std::set<std::string>;

/// An entry that is in force for yes needs no other one for no, and one for no value none for the others.
bool IsAskedFor(const Values& asked, const std::string& name, const std::string& value) {
    if (asked.contains(value) || asked.contains("")) return true;
    return IsFlag(name, value) && std::any_of(asked.begin(), asked.end(),
                                              [&](const std::string& each) { return IsFlag(name, each); });
}

bool AsksForFlags(const Values& asked, const std::string& name) {
    const auto isFlag = [&](const std::string& value) { return IsFlag(name, value); };
    return std::all_of(asked.begin(), asked.end(), isFlag) &&
           !std::all_of(asked.begin(), asked.end(), IsDigit);
}

/// Whether the conditions ask for yes and for no, so that each of them counts on one of the two.
bool AsksForBoth(const Values& asked, const std::string& name) {
    const auto hasOne = [&](bool meaning) {
        return std::any_of(asked.begin(), asked.end(), [&](const std::string& value) {
            return MeaningOf(name, value) == std::optional(meaning);
        });
    };
    return hasOne(true) && hasOne(false);
}

/// Whether the value is likely to be meant as yes or no: in capitals, with its letters mixed up, or a word
/// that other programs take.
bool IsNearFlag(const std::string& value) {
    constexpr const char* kNear[] = {"yes", "no", "true", "false", "y", "n", "on", "off"};
    const std::string plain = Plain(value);
    return std::any_of(std::begin(kNear), std::end(kNear), [&](std::string_view word) {
        return std::is_permutation(plain.begin(), plain.end(), word.begin(), word.end());
    });
}

/// Empty if the value is much unlike all of them.
std::string Meant(const Values& asked, const std::string& value) {
    const auto found = std::find_if(asked.begin(), asked.end(),
                                    [&](const std::string& each) { return Plain(each) == Plain(value); });
    return found == asked.end() ? "" : *found;
}

class ConditionChecker {
  public:
    explicit ConditionChecker(Deployment& product) : m_product(product), m_values(product) {
        ForEachCondition(product.Lists().Targets(), [&](const ListEntry& entry) {
            m_asked[entry.when.parameter].insert(entry.when.value);
        });
    }

    ConditionFindings Check() {
        std::set<std::string> done;
        ForEachCondition(m_product.Lists().Targets(), [&](const ListEntry& entry) {
            if (!entry.isEnabled || !entry.IsFor(m_product.Role())) return;
            if (done.insert(entry.when.parameter).second) Check(entry.when);
        });
        return std::move(m_found);
    }

  private:
    void Check(const Condition& when) {
        const std::optional<ConditionValue> value = m_values.Find(when.parameter);
        if (!value) return TellNotGiven(when);
        if (!value->isComplete) return TellIncomplete(when.parameter);
        CheckValue(when.parameter, value->text);
    }

    /// A condition on a parameter that nobody gives is never met.
    void TellNotGiven(const Condition& when) {
        const std::string& name = when.parameter;
        const std::string nearest = NameMeantBy(name);
        (nearest.empty() ? m_found.notGiven : m_found.problems)
            .push_back({when.file, when.line, 0,
                        Words("when asks for the parameter %s, which nobody gives", name),
                        nearest.empty() ? _("correct its name, or give it a value, which may be empty")
                                        : Words("did you mean %s?", nearest)});
    }

    /// One that nothing else asks for: hosts with a list in common need not give all that it asks for, and
    /// their names may be much alike. Empty if there is none.
    std::string NameMeantBy(const std::string& name) {
        std::vector<std::string> names = NamesOfTheProduct();
        for (const auto& [given, value] : m_product.Values().Params())
            names.push_back(given);
        std::erase_if(names, [&](const std::string& each) { return m_asked.contains(each); });
        if (LikelyName(name, names).empty()) return "";
        // Only now, since it reads all templates.
        const std::set<std::string> used = UsedAnywhere(m_product);
        std::erase_if(names, [&](const std::string& each) { return used.contains(PlaceholderFor(each)); });
        return LikelyName(name, names);
    }

    void TellIncomplete(const std::string& name) {
        Problem problem = ProblemIn(name);
        problem.text =
            Words("when asks for the value of %s, in which a placeholder has no value or no end", name);
        problem.remedy = _("correct it");
        m_found.problems.push_back(std::move(problem));
    }

    /// The values of the product's own parameters are judged by their kinds. The message quotes no value,
    /// since its file may not be for everybody.
    void CheckValue(const std::string& name, const std::string& value) {
        const Values& asked = m_asked[name];
        if (IsKnownParameter(name) || value.empty() || IsAskedFor(asked, name, value)) return;
        Problem problem = ProblemIn(name);
        if (AsksForFlags(asked, name) && (AsksForBoth(asked, name) || IsNearFlag(value))) {
            problem.text = Words("when asks whether %s is yes or no, and its value is neither", name);
            problem.remedy = _("write yes or no");
            return m_found.problems.push_back(std::move(problem));
        }
        problem.text = Words("the value of %s is none that when asks for: %s", name,
                             Text::Joined({asked.begin(), asked.end()}, ", "));
        if (const std::string meant = Meant(asked, value); !meant.empty()) {
            problem.remedy = Words("did you mean %s?", meant);
            return m_found.problems.push_back(std::move(problem));
        }
        problem.remedy =
            _("correct it; or, if nothing is to be in force for it, name it in the when of an "
              "entry with enabled = false");
        m_found.warnings.push_back(std::move(problem));
    }

    /// The place where the value is given; the whole main file if nobody knows.
    Problem ProblemIn(const std::string& name) {
        HostValues& values = m_product.Values();
        if (const GivenParameter* const assumed = FindGiven(values.Assumed(), name))
            return {.file = assumed->file};
        const auto source = IsKnownParameter(name) ? values.SourceOfParam(name)
                                                   : values.SourceOfPlaceholder(PlaceholderFor(name));
        if (!source) return {.file = m_product.Param("ZET_CFG")};
        return {.file = source->file, .line = source->line};
    }

    Deployment& m_product;
    const ConditionValues m_values;
    std::map<std::string, Values> m_asked;  ///< by parameter, those of disabled entries, too
    ConditionFindings m_found;
};

}  // namespace

ConditionFindings CheckConditions(Deployment& product) {
    return ConditionChecker(product).Check();
}

std::set<std::string> ParametersAskedFor(Deployment& product) {
    std::set<std::string> asked;
    ForEachCondition(product.Lists().Targets(), [&](const ListEntry& entry) {
        if (entry.isEnabled) asked.insert(entry.when.parameter);
    });
    return asked;
}

std::set<std::string> UsedOrAskedFor(Deployment& product, std::set<std::string> used) {
    for (const std::string& name : ParametersAskedFor(product))
        used.insert(PlaceholderFor(name));
    return used;
}

}  // namespace ZET::Deploy
