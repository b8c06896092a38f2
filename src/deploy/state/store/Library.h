#ifndef ZET_STORE_LIBRARY_H
#define ZET_STORE_LIBRARY_H

#include <string>

namespace ZET::Deploy {

/// A shared library of the host that only some commands need: it is opened on first use, and stays open until
/// the process ends. Throws a `Failure` if the library is missing.
class Library {
  public:
    /// `package` is the one that provides it.
    Library(const char* file, const char* package);

    /// Looks up a function, whose type is that of `function`.
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
