#include "deploy/lists/TargetListReader.h"

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/lists/EditKeys.h"
#include "deploy/lists/ListFile.h"
#include "deploy/lists/ListProblems.h"
#include "deploy/lists/TargetKeys.h"
#include "deploy/lists/Toml.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

/// Where something of an entry stands, in whichever list that is.
struct ListPlace {
    ListProblems* problems = nullptr;
    std::string file{};
    Place place{};

    void Add(const std::string& text, const std::string& remedy) const { problems->Add(place, text, remedy); }

    /// For a message about the other place: "line 3", with the file if that is another one.
    std::string SeenFrom(const ListPlace& other) const {
        return file == other.file ? Words("line %s", std::to_string(place.line))
                                  : file + ":" + std::to_string(place.line);
    }
};

/// An entry, with what can be judged only after all lists are read.
template <typename Kind>
struct Listed {
    Kind entry;
    ListPlace name;  ///< in the last list that says something about the entry
    ListPlace path;
    bool hasValue = false;  ///< of an edit: what it sets
};

/// All entries of one kind. Later lists change single keys of them.
template <typename Kind>
class Entries {
  public:
    /// The entry of this name; an empty name always makes a new one.
    Listed<Kind>& Of(const std::string& name, const ListPlace& place) {
        const auto [known, isNew] =
            name.empty() ? std::pair(m_byName.end(), true) : m_byName.emplace(name, m_entries.size());
        if (isNew) {
            m_entries.push_back(std::make_unique<Listed<Kind>>());
            m_entries.back()->entry.file = place.file;
            m_entries.back()->entry.line = static_cast<int>(place.place.line);
        }
        Listed<Kind>& listed = isNew ? *m_entries.back() : *m_entries[known->second];
        if (!isNew) listed.entry.changedBy.push_back(place.file);
        listed.name = place;
        return listed;
    }

    const std::vector<std::unique_ptr<Listed<Kind>>>& All() const { return m_entries; }

  private:
    std::vector<std::unique_ptr<Listed<Kind>>> m_entries;
    std::unordered_map<std::string, std::size_t> m_byName;
};

using Targets = Entries<Target>;
using Edits = Entries<ListedEdit>;

/// Takes what one list says into the entries.
class ListReader {
  public:
    ListReader(const ListText& list, Targets& targets, Edits& edits)
        : m_file(list.file),
          m_text(list.text),
          m_problems(list.file, list.text),
          m_targets(targets),
          m_edits(edits) {}

    void Read() {
        if (std::optional<Problem> problem = FormProblem(m_file, m_text)) {
            m_formProblem = std::move(problem);
            return;
        }
        const toml::parse_result parsed = toml::parse(m_text);
        m_isUnderstood = static_cast<bool>(parsed);
        if (parsed) {
            TakeList(parsed.table());
        } else {
            AddOfSyntax(parsed.error());
        }
    }

    bool IsUnderstood() const { return m_isUnderstood && !m_formProblem; }

    std::vector<Problem> TakeProblems() {
        return m_formProblem ? std::vector<Problem>{*m_formProblem} : m_problems.Take();
    }

  private:
    /// Reports a header that is there twice itself, since the parser misspells quoted names.
    void AddOfSyntax(const toml::parse_error& error) {
        const Place place = PlaceOf(error.source());
        const std::string line(m_problems.LineAt(place.line));
        int earlier = 1;
        while (earlier < place.line && m_problems.LineAt(earlier) != line)
            ++earlier;
        if (line.starts_with('[') && earlier < place.line) {
            m_problems.Add(place, Words("%s is there twice", line),
                           Words("see line %s, put both into one", std::to_string(earlier)));
        } else {
            m_problems.Add(place, Words("is no TOML: %s", error.description()),
                           _("correct it: texts stand in quotes, each name and each key is there once"));
        }
    }

    void TakeList(const toml::table& list) {
        for (const Entry& entry : InOrder(list)) {
            if (entry.Name() == "templates") {
                TakeTemplates(entry);
            } else if (entry.Name() == "edits") {
                TakeEdits(entry);
            } else {
                m_problems.Add(entry.KeyPlace(), Words("unknown key \"%s\"", entry.Name()),
                               _("put what a template has below [templates.\"NAME\"]"));
            }
        }
    }

    void TakeTemplates(const Entry& entry) {
        const toml::table* const templates = entry.value->as_table();
        if (templates == nullptr)
            return m_problems.Add(entry.KeyPlace(), Words("templates is %s", KindOf(*entry.value)),
                                  _("write [templates.\"NAME\"]"));
        for (const Entry& each : InOrder(*templates))
            TakeTemplate(each);
    }

    void TakeTemplate(const Entry& entry) {
        const std::string name = entry.Name();
        const toml::table* const table = entry.value->as_table();
        const auto refuse = [&](const std::string& text, const std::string& remedy) {
            m_problems.Add(entry.KeyPlace(), Words("template [%s] %s", name, text), remedy);
        };
        if (table == nullptr)
            return refuse(Words("is %s", KindOf(*entry.value)),
                          _("write [templates.\"NAME\"] above its keys"));
        if (LeavesTemplates(name))
            return refuse(_("leaves the directory of the templates"), _("name a template below it"));
        if (!IsPlainName(name))
            return refuse(_("has parts that lead nowhere"),
                          Words("write [templates.\"%s\"]", Normalised(name).substr(1)));
        if (HasEnd(name))
            return refuse(_("has a NUL byte or a line feed in its name"), _("give it another name"));
        if (IsAmongLists(name))
            return refuse(_("would stand among lists or values"), _("give it another name"));
        TakeKeys(entry, *table);
    }

    void TakeKeys(const Entry& entry, const toml::table& table) {
        std::vector<Entry> keys;
        for (const Entry& each : InOrder(table)) {
            const toml::table* const part = IsOfServices(each.Name()) ? nullptr : NextPart(*each.value);
            if (part == nullptr) {
                keys.push_back(each);
            } else {
                TellUnquoted(entry.Name() + "." + each.Name(), each, *part);
            }
        }
        if (keys.empty() && !table.empty()) return;
        Listed<Target>& listed = m_targets.Of(entry.Name(), PlaceHere(entry.KeyPlace()));
        listed.entry.templateName = entry.Name();
        TargetKeys reader(listed.entry, m_problems);
        for (const Entry& key : keys) {
            if (key.Name() == "target") listed.path = PlaceHere(key.ValuePlace());
            reader.Take(key);
            if (key.Name() == "when") SetPlace(listed.entry.when, key);
        }
    }

    static bool IsOfServices(const std::string& key) { return key == "restart" || key == "reload"; }

    /// `name` is what the parts of the name make so far, and `table` what they lead to.
    void TellUnquoted(const std::string& name, const Entry& entry, const toml::table& table) {
        bool isWhole = table.empty();
        for (const Entry& each : InOrder(table)) {
            const toml::table* const part = IsOfServices(each.Name()) ? nullptr : NextPart(*each.value);
            if (part == nullptr) {
                isWhole = true;
            } else {
                TellUnquoted(name + "." + each.Name(), each, *part);
            }
        }
        if (isWhole)
            m_problems.Add(entry.KeyPlace(), Words("the name of the template [%s] is not quoted", name),
                           Words("write [templates.\"%s\"]", name));
    }

    void TakeEdits(const Entry& entry) {
        const toml::array* const edits = entry.value->as_array();
        if (edits == nullptr)
            return m_problems.Add(entry.KeyPlace(), Words("edits is %s", KindOf(*entry.value)),
                                  _("write [[edits]] above the keys of each"));
        for (const toml::node& node : *edits) {
            const toml::table* const table = node.as_table();
            if (table == nullptr) {
                m_problems.Add(PlaceOf(node.source()), Words("edits holds %s", KindOf(node)),
                               _("write [[edits]] above the keys of each"));
            } else {
                TakeEdit(*table);
            }
        }
    }

    void TakeEdit(const toml::table& table) {
        const Place place = PlaceOf(table.source());
        const auto* const named = table.get_as<std::string>("name");
        const std::string name = named == nullptr ? "" : named->get();
        if (table.contains("name") && name.empty())
            return m_problems.Add(PlaceOf(table.get("name")->source()), _("name names nothing"),
                                  _("write a name in quotes, or remove the line"));
        if (!name.empty() && !m_editNames.insert(name).second)
            return m_problems.Add(place, Words("edit \"%s\" is there twice", name), _("put both into one"));
        Listed<ListedEdit>& listed = m_edits.Of(name, PlaceHere(place));
        ListedEdit& edit = listed.entry;
        edit.name = name;
        if (edit.roles.empty()) edit.roles = {std::begin(kRoles), std::end(kRoles)};
        EditKeys reader(edit, m_problems);
        for (const Entry& key : InOrder(table)) {
            if (key.Name() == "file") listed.path = PlaceHere(key.ValuePlace());
            listed.hasValue = listed.hasValue || key.Name() == "value" || key.Name() == "line";
            reader.Take(key);
            if (key.Name() == "when") SetPlace(edit.when, key);
        }
        reader.Finish(place);
    }

    void SetPlace(Condition& when, const Entry& key) const {
        when.file = m_file;
        when.line = static_cast<int>(key.ValuePlace().line);
    }

    ListPlace PlaceHere(const Place& place) { return {&m_problems, m_file, place}; }

    const std::string& m_file;
    const std::string_view m_text;
    ListProblems m_problems;
    std::optional<Problem> m_formProblem;
    bool m_isUnderstood = true;
    std::set<std::string> m_editNames;
    Targets& m_targets;
    Edits& m_edits;
};

/// Judges what all lists say together.
class Judge {
  public:
    Judge(const ParameterValue& valueOf, const std::string& shipped)
        : m_valueOf(valueOf), m_shipped(shipped) {}

    void Take(Listed<Target>& listed) {
        Target& target = listed.entry;
        Decide(listed);
        if (!target.isEnabled || target.isStray) return;
        const std::string& name = target.templateName;
        if (listed.path.problems == nullptr)
            listed.name.Add(Words("template [%s] has no target", name), _("add target = \"/PATH\""));
        if (!target.hasRoles)
            listed.name.Add(Words("template [%s] has no roles", name),
                            _("add roles = \"server\", \"client\" or \"both\""));
        if (target.IsInForce() && !target.path.empty()) ClaimFile(listed);
    }

    void Take(Listed<ListedEdit>& listed) {
        ListedEdit& edit = listed.entry;
        Decide(listed);
        edit.isStray = edit.isStray && !edit.name.empty();
        if (!edit.isEnabled || edit.isStray) return;
        if (listed.path.problems == nullptr)
            listed.name.Add(_("an edit has no file"), _("add file = \"/PATH\""));
        const bool hasSelector = !edit.param.empty() || !edit.pattern.empty();
        if (!hasSelector || !listed.hasValue)
            listed.name.Add(_("an edit lacks what it sets"), _("add param and value, or pattern and line"));
    }

  private:
    template <typename Kind>
    void Decide(Listed<Kind>& listed) const {
        Kind& entry = listed.entry;
        const auto& [parameter, value, file, line] = entry.when;
        entry.isConditionMet = parameter.empty() || HaveSameMeaning(parameter, m_valueOf(parameter), value);
        // The package may have dropped or renamed what a list of the host's own changes.
        entry.isStray = entry.isEnabled && listed.path.problems == nullptr && entry.file != m_shipped;
    }

    /// Claims the file for each role that the target is for.
    void ClaimFile(const Listed<Target>& listed) {
        const Target& target = listed.entry;
        const Listed<Target>* earlier = nullptr;
        for (const Role role : target.roles) {
            const auto [known, isFirst] = m_claims[role].emplace(target.path, &listed);
            if (!isFirst) earlier = known->second;
        }
        if (earlier == nullptr) return;
        listed.path.Add(Words("target %s is made from [%s] too", target.path, earlier->entry.templateName),
                        Words("see %s, give each file to one template", earlier->path.SeenFrom(listed.path)));
    }

    const ParameterValue& m_valueOf;
    const std::string& m_shipped;  ///< the first list
    std::map<Role, std::unordered_map<std::string, const Listed<Target>*>> m_claims;
};

}  // namespace

TargetList ReadTargetTexts(const std::vector<ListText>& lists, const ParameterValue& valueOf) {
    Targets targets;
    Edits edits;
    std::vector<std::unique_ptr<ListReader>> readers;
    TargetList list;
    for (const ListText& each : lists) {
        readers.push_back(std::make_unique<ListReader>(each, targets, edits));
        readers.back()->Read();
        list.isUnderstood = list.isUnderstood && readers.back()->IsUnderstood();
        if (list.file.empty()) list.file = each.file;
    }
    Judge judge(valueOf, list.file);
    // All entries are judged before any is moved, since the problem of one may name another.
    const auto judgeAndTake = [&](const auto& listed, auto& taken) {
        for (const auto& each : listed)
            if (list.isUnderstood) judge.Take(*each);
        for (const auto& each : listed)
            taken.push_back(std::move(each->entry));
    };
    judgeAndTake(targets.All(), list.targets);
    judgeAndTake(edits.All(), list.edits);
    for (const auto& reader : readers)
        Append(list.problems, reader->TakeProblems());
    return list;
}

}  // namespace ZET::Deploy
