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
// Not a vector as well: if all its types can be moved without failing, this library's variant assumes that it
// always holds a value, and crashes when memory runs out during a copy.
using List = std::list<Value>;
using Fields = std::vector<std::pair<std::string, Value>>;

/// A value of the JSON document. Texts are bytes; what is not UTF-8 is replaced when the document is written,
/// and an additional field, named after the text or list of texts with "_lossy" appended, says so.
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

/// Whether a text, or one in a list of texts, cannot be represented exactly.
bool IsLossy(const Value& value);

/// The only way for a command to report: results go to standard output as text or as one JSON document,
/// everything else to standard error. Each result is given in both forms; the options decide which one is
/// shown.
class Report {
  public:
    explicit Report(const GlobalOptions& asked);

    /// A result for the user: one line, whatever bytes its names contain. `Lines` adds lines from elsewhere
    /// below it.
    void Line(const std::string& text);
    void Lines(std::string_view text);

    /// A line that another program may read: a program gets every byte, a terminal a printable form.
    void Data(const std::string& line);

    /// The program's own text, including its line feeds.
    void Text(std::string_view text);

    /// A unified diff, in color if wanted; otherwise as `Data`.
    void Diff(std::string_view diff);

    /// The text of a file, byte for byte; a terminal gets a printable form.
    void Bytes(std::string_view text);

    /// Shows what is printed from now on in the user's pager, if standard output is a terminal.
    void UsePager();

    /// A field of the document; an element of one of its lists, which exists from the first call of `AddList`
    /// on.
    void Set(const std::string& name, Value value);
    void AddList(const std::string& name);
    void Add(const std::string& list, Value value);

    /// Details (with "-v"), remarks, warnings and errors for the user; the last two also go into the
    /// document. Each is one line, whatever bytes its names contain; an error may be followed by lines from
    /// elsewhere.
    void Detail(const std::string& text);
    void Remark(const std::string& text);
    void Warning(const std::string& text);
    void Error(const std::string& text, const std::string& lines = "");

    /// The progress, for a user who waits at a terminal.
    void Progress(std::size_t done, std::size_t total) { m_progress.Show(done, total); }

    /// Writes the document, if one is wanted, and flushes everything. Returns `status`, or `kFailed` if
    /// standard output could not be written. A pipe that its reader closed is no failure.
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
