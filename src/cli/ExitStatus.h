#ifndef ZET_EXIT_STATUS_H
#define ZET_EXIT_STATUS_H

namespace ZET::Cli {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUse = 2;
inline constexpr int kNotInSync = 3;  ///< also if a dry run would change something

}  // namespace ZET::Cli

#endif
