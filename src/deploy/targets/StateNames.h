#ifndef ZET_STATE_NAMES_H
#define ZET_STATE_NAMES_H

namespace ZET::Deploy {

/// How a target, or a line that the lists ask for, stands to what a commit would make of it.
inline constexpr char kInSync[] = "in sync";
inline constexpr char kPending[] = "pending";
inline constexpr char kEdited[] = "edited";
inline constexpr char kMissing[] = "missing";
inline constexpr char kNotCommitted[] = "not committed";
inline constexpr char kDiffers[] =
    "differs";  ///< of a target: without the history, nobody can tell whose edit it is
inline constexpr char kUnknown[] = "unknown";

}  // namespace ZET::Deploy

#endif
