#ifndef ZET_REPORT_H
#define ZET_REPORT_H

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "cli/GlobalOptions.h"
#include "cli/OutputStream.h"
#include "cli/Pager.h"
#include "cli/ProgressLine.h"

namespace ZET::Cli {

struct Value;
// Not a vector too: with nothing but types that it knows to be moved without failing, this library's variant
// takes itself for one that always holds a value, and crashes when memory runs out while it is copied.
using List = std::list<Value>;
using Fields = std::vector<std::pair<std::string, Value>>;

/// A value of the JSON document. Texts are bytes; what is no UTF-8 is replaced when the document is written,
/// and the name of the text, or of the list of texts, with "_lossy" appended then says so.
struct Value {
    std::variant<std::nullptr_t, bool, std::int64_t, std::string, List, Fields> value;

    Value(std::nullptr_t) : value(nullptr) {}
    Value(bool truth) : value(truth) {}
    Value(int number) : value(std::int64_t{number}) {}
    Value(std::int64_t number) : value(number) {}
    Value(const char* text) : value(std::string(text)) {}
    Value(std::string text) : value(std::move(text)) {}
    Value(List list) : value(std::move(list)) {}
    Value(Fields fields) : value(std::move(fields)) {}
};

/// The one way a command reports: results on standard output as text or as one JSON document, everything else
/// on standard error. Each result is given in both forms; the caller's choice decides which one is shown.
class Report {
  public:
    explicit Report(const GlobalOptions& asked);

    /// A result for a reader: one line, whatever the names in it hold. Below it, lines of somebody else's.
    void Line(const std::string& text);
    void Lines(std::string_view text);

    /// A line that another program may read: it gets every byte of it, a terminal what it can show.
    void Data(const std::string& line);

    /// The program's own words, which end their own lines.
    void Text(std::string_view text);

    /// A unified diff, in color where that is wanted; otherwise the same as `Data`.
    void Diff(std::string_view diff);

    /// A text of a file, byte for byte; a terminal gets what it can show.
    void Bytes(std::string_view text);

    /// What is printed from now on is shown by the reader's pager, if he sits at a terminal.
    void UsePager();

    /// A field of the document; an element of one of its lists, which exists from the first call of `AddList`
    /// on.
    void Set(const std::string& name, Value value);
    void AddList(const std::string& name);
    void Add(const std::string& list, Value value);

    /// Progress ("-v" wanted), remarks, warnings and errors for the reader; the last two are in the document
    /// too. Each is one line, whatever the names in it hold; an error may have lines of somebody else's below
    /// it.
    void Detail(const std::string& text);
    void Remark(const std::string& text);
    void Warning(const std::string& text);
    void Error(const std::string& text, const std::string& lines = "");

    /// How far the work is, for a reader who waits at a terminal.
    void Progress(std::size_t done, std::size_t total) { m_progress.Show(done, total); }

    /// Writes the document, if that is what was asked for, and sees to it that everything reached its reader.
    /// Returns `status`, or `kFailed` when standard output could not be written. A pipe whose reader went
    /// away is no failure.
    int Finish(int status);

  private:
    void ShowPaged();
    void Message(const char* kind, const std::string& text, std::string_view lines = "");

    std::string m_program;
    bool m_json;
    bool m_quiet;
    bool m_verbose;
    OutputStream m_output;
    OutputStream m_messages;
    ProgressLine m_progress;
    bool m_color;
    std::optional<Pager> m_pager;
    std::string m_paged;
    Fields m_document;
};

}  // namespace ZET::Cli

#endif
