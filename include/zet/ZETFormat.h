#ifndef ZET_ZETFORMAT_H
#define ZET_ZETFORMAT_H

/// What the module writes into files and puts beside them, for everybody who must recognise it.
namespace ZET {

/// Open and close a managed block: lines that the system wrote.
inline constexpr char ZETBeginMarker[] = "# ---ZET_BEGIN---";
inline constexpr char ZETEndMarker[] = "# ----ZET_END----";

/// Stands before the former text of a line that the managed block after it replaced.
inline constexpr char ZETFormerLinePrefix[] = "# --PRE-ZET-- ";

/// Open the notice at the top of a file and a comment of a template; the third closes either.
inline constexpr char ZETNoticeMarker[] = "# --ZET_CONFIG_COMMENT--";
inline constexpr char ZETTemplateCommentMarker[] = "# --ZET_TEMPLATE_COMMENT--";
inline constexpr char ZETCommentEndMarker[] = "# --ZET_COMMENT_END--";

/// Companions of a file: the text on its way, the file as it was before the system first wrote it, and the
/// empty file that says that there was none.
inline constexpr char ZETTemporarySuffix[] = ".tmp";
inline constexpr char ZETReserveSuffix[] = ".before_zet";
inline constexpr char ZETAbsenceSuffix[] = ".no_file_before_zet";

}  // namespace ZET

#endif
