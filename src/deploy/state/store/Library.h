#ifndef ZET_STORE_LIBRARY_H
#define ZET_STORE_LIBRARY_H

#include <string>

namespace ZET::Deploy {

/// A shared library of the host that only some commands need: it is opened when it is needed first, and stays
/// to the end of the process. A library that is not there is a `Failure`.
class Library {
  public:
    /// `package` is the one that brings it.
    Library(const char* file, const char* package);

    /// Looks a function up, of which `function` has the type.
    template <typename Function>
    void Find(Function*& function, const char* name) const {
        function = reinterpret_cast<Function*>(Symbol(name));
    }

  private:
    void* Symbol(const char* name) const;
    [[noreturn]] void Fail(const std::string& what) const;

    const char* m_file;
    const char* m_package;
    void* m_handle;
};

}  // namespace ZET::Deploy

#endif
