#ifndef ZET_BENCH_HOST_H
#define ZET_BENCH_HOST_H

#include <filesystem>
#include <string>

#include "zet/ZETHost.h"

namespace ZET {

/// A reference core without syncing, with directories of its own that are removed with the object.
class BenchHost {
  public:
    BenchHost();
    ~BenchHost();
    BenchHost(const BenchHost&) = delete;
    BenchHost& operator=(const BenchHost&) = delete;

    IZETCore& Core() { return m_host.GetCore(); }
    const std::filesystem::path& Directory() const { return m_directory; }
    void WriteTemplate(const std::string& name, const std::string& text) const;

  private:
    std::filesystem::path m_directory;
    CZETHost m_host;
};

}  // namespace ZET

#endif
