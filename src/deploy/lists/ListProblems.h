#ifndef ZET_LIST_PROBLEMS_H
#define ZET_LIST_PROBLEMS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A place in a list; line and character count from 1.
struct Place {
    int line = 0;
    int character = 0;
};

/// The problems of a list.
class ListProblems {
  public:
    ListProblems(const std::string& file, std::string_view text) : m_file(file), m_text(text) {}

    void Add(const Place& place, const std::string& text, const std::string& remedy);

    /// The line without its line feed; empty if there is no line of that number.
    std::string_view LineAt(int number);

    /// Returns the problems in the order of their places, and forgets them.
    std::vector<Problem> Take();

  private:
    int ColumnOf(const Place& place);
    void FindLines();

    const std::string m_file;
    const std::string_view m_text;
    std::vector<std::size_t> m_lineBegins;  ///< found when they are first needed
    std::vector<Problem> m_problems;
};

}  // namespace ZET::Deploy

#endif
