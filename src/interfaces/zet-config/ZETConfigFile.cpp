#include "ZETConfigFile.h"

#include <utility>

#include "Companions.h"
#include "Messages.h"
#include "Passes.h"
#include "posix/ReadWrite.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

void RequireArgument(const std::string& argument, const char* function, std::size_t line) {
    ZET::RequireArgument(argument, kFileSource, function, line);
}

}  // namespace

CZETConfigFile::CZETConfigFile(IZETCore& core) : m_core(core) {}

CZETConfigFile::~CZETConfigFile() = default;

bool CZETConfigFile::Open(const std::string& fileName, const std::string& role, bool noMarkers) {
    m_fromTemplate = false;
    return InternalOpen(fileName, role, noMarkers);
}

bool CZETConfigFile::OpenTemplate(const std::string& templateName, const std::string& fileName,
                                  const std::string& role, bool noMarkers) {
    RequireArgument(fileName, "OpenTemplate", Here());
    m_targetFileName = fileName;
    m_fromTemplate = true;
    return InternalOpen(m_core.GetParam("ZET_CFG_DIR") + "/" + templateName, role, noMarkers);
}

bool CZETConfigFile::InternalOpen(const std::string& fileName, const std::string& role, bool noMarkers) {
    RequireArgument(fileName, "InternalOpen", Here());
    m_noMarkers = noMarkers;
    m_fileName = fileName;
    m_role = role;
    m_content.reset();
    InternalNotice();

    const Descriptor file = OpenForReading(fileName);
    struct stat status = {};
    if (file.IsOpen() && fstat(file, &status) != 0) {
        Message message(kFileSource, "InternalOpen", Here());
        Throw<EZETError>(
            message.Format()(1, message.Translated(kCoreDomain, "Error stat '%s':%m"), fileName.c_str()));
    }
    Buffer bytes;
    if (!file.IsOpen() || !ReadAll(file, status, bytes)) {
        Message message(kFileSource, "InternalOpen", Here());
        Log(ZETLogError, message.Format()(1, message.Translated(kCoreDomain, "Failed to open file '%s'."),
                                          fileName.c_str()));
        return false;
    }
    m_fileStat = status;
    m_content = std::make_unique<TextReader>(std::move(bytes));
    return true;
}

void CZETConfigFile::InternalNotice() {
    Message message(kFileSource, "InternalNotice", Here());
    if (m_fromTemplate) {
        Log(ZETLogNotice,
            message.Format()(
                2, message.Translated(kModuleDomain, "Process config file template '%s' to '%s'..."),
                m_fileName.c_str(), m_targetFileName.c_str()));
    } else {
        Log(ZETLogNotice,
            message.Format()(1, message.Translated(kModuleDomain, "Process config file '%s'..."),
                             m_fileName.c_str()));
    }
}

/// Runs a pass over the whole text and installs the result. If it throws, the text is unchanged.
template <typename Pass>
void CZETConfigFile::Rewrite(Pass&& pass) {
    m_content->Rewind();
    TextBuilder result(*m_content, std::move(m_spare));
    pass(*m_content, result);
    m_spare = result.Install();
}

void CZETConfigFile::RequireContent(const char* function, std::size_t line) const {
    if (m_content) return;
    Message message(kFileSource, function, line);
    Throw<EZETCheckError>(message.Format()(
        1, message.Translated(kModuleDomain, "Invalid config object '%s'."), m_fileName.c_str()));
}

void CZETConfigFile::ApplyTemplates(StringMap& values) {
    RequireContent("ApplyTemplates", Here());
    Rewrite([&](TextReader& in, TextBuilder& out) { ApplyTemplatesPass(in, out, values); });
}

void CZETConfigFile::RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) {
    RequireContent("RemoveMarkers", Here());
    Rewrite([&](TextReader& in, TextBuilder& out) { RemoveMarkersPass(in, out, beginMarker, endMarker); });
}

void CZETConfigFile::RemoveZETMarkers() {
    RemoveMarkers(ZETBeginMarker, ZETEndMarker);
    RemoveMarkers(ZETNoticeMarker, ZETCommentEndMarker);
}

void CZETConfigFile::SetParamValue(const std::string& name, const std::string& value) {
    RequireArgument(name, "SetParamValue", Here());
    SetLine(ZETEditOpening + name + "=", name + "=" + value);
}

std::string CZETConfigFile::GetParamValue(const std::string& name) {
    RequireArgument(name, "GetParamValue", Here());
    const std::string line = GetLine(ZETLookupOpening + name + "=");
    const std::size_t equalsSign = line.find('=');
    return equalsSign == std::string::npos ? "" : line.substr(equalsSign + 1);
}

void CZETConfigFile::RestoreParamValue(const std::string& name) {
    RequireArgument(name, "RestoreParamValue", Here());
    // No "^": `RestoreLine` anchors the pattern after the prefix of a kept former line.
    RestoreLine(ZETRestoreOpening + name + "=");
}

void CZETConfigFile::SetLine(const std::string& pattern, const std::string& line) {
    RequireArgument(pattern, "SetLine", Here());
    LineMatcher matches(m_core, pattern);
    const LineStyle style = m_noMarkers ? LineStyle::Bare : LineStyle::Marked;
    Rewrite([&](TextReader& in, TextBuilder& out) { SetLinePass(in, out, matches, line, style); });
}

std::string CZETConfigFile::GetLine(const std::string& pattern) {
    RequireArgument(pattern, "GetLine", Here());
    LineMatcher matches(m_core, pattern);
    m_content->Rewind();
    std::string_view line;
    return FindLine(*m_content, matches, line) ? std::string(line) : "";
}

void CZETConfigFile::RestoreLine(const std::string& pattern) {
    RequireArgument(pattern, "RestoreLine", Here());
    const std::string formerLine =
        std::string("^") + ZETFormerLinePrefix + pattern.substr(pattern.starts_with('^') ? 1 : 0);
    LineMatcher matches(m_core, formerLine);
    Rewrite([&](TextReader& in, TextBuilder& out) { RestoreLinePass(in, out, matches); });
}

std::string CZETConfigFile::Header() {
    if (!m_fromTemplate) return dgettext(kModuleDomain, ZETEditedNotice);
    Message message(kFileSource, "Header", Here());
    return TextOf(message.Format()(2, message.Translated(kModuleDomain, ZETMadeNotice), m_fileName.c_str(),
                                   m_role == "server" ? "zet-init" : "zet-client"));
}

void CZETConfigFile::InsertHeader(const std::string& header) {
    RequireArgument(header, "InsertHeader", Here());
    Rewrite([&](TextReader& in, TextBuilder& out) { InsertHeaderPass(in, out, header); });
}

void CZETConfigFile::Save(bool noBackup) {
    TextToSave();
    InternalSaveAs(m_fromTemplate ? m_targetFileName : m_fileName, noBackup);
}

std::string_view CZETConfigFile::TextToSave() {
    if (!m_noMarkers) InsertHeader(Header());
    // After inserting the header: a template that opens with a comment gets its notice before that comment,
    // and keeps it.
    if (m_fromTemplate) RemoveMarkers(ZETTemplateCommentMarker, ZETCommentEndMarker);
    m_content->Rewind();
    return m_content->Rest();
}

void CZETConfigFile::InternalSaveAs(const std::string& fileName, bool noBackup) {
    const std::string temporaryName = fileName + ZETTemporarySuffix;
    WriteTemporary(temporaryName, fileName);
    if (!noBackup) KeepOriginal(fileName, RenameFile);
    RenameFile(temporaryName, fileName);
}

/// Writes the text as it would be read: nothing if it is exhausted, which it remains.
void CZETConfigFile::WriteTemporary(const std::string& temporaryName, const std::string& fileName) {
    std::optional<Owner> targetOwner;
    const bool isKnown = FindOwner(fileName, targetOwner);
    const Descriptor file = isKnown ? OpenTemporary(temporaryName, targetOwner) : Descriptor();
    m_content->Rewind();
    if (!file.IsOpen() || !WriteAll(file, m_content->Rest())) {
        Message message(kFileSource, "InternalSaveAs", Here());
        Throw<EZETError>(message.Format()(1, message.Translated(kCoreDomain, "Failed to save file '%s'."),
                                          temporaryName.c_str()));
    }
    struct stat status = {};
    if (fstat(file, &status) != 0) {
        Message message(kFileSource, "InternalSaveAs", Here());
        Throw<EZETError>(message.Format()(1, message.Translated(kCoreDomain, "Error stat '%s':%m"),
                                          temporaryName.c_str()));
    }
    // The owner is set first: until it is final, nobody may run the file with its owner's rights. The file is
    // private until then and has no set-ID bits that a change of owner would clear.
    const Owner owner = targetOwner.value_or(OwnerOf(status));
    const bool isGiven = owner == OwnerOf(status) || SetOwner(file, owner);
    if (status.st_mode != m_fileStat.st_mode) SetMode(file, FinalMode(owner, isGiven));
}

/// The mode of the file that was read. Set-user-ID and set-group-ID stay only if the file has the intended
/// owner: the one that it was given (`isGiven`) and, for a file edited in place, the one that it had when it
/// was read. By now somebody else's file may have its name.
mode_t CZETConfigFile::FinalMode(const Owner& owner, bool isGiven) const {
    const bool isMeant = isGiven && (m_fromTemplate || owner == OwnerOf(m_fileStat));
    constexpr mode_t kRunsAsOwner = S_ISUID | S_ISGID;
    return isMeant ? m_fileStat.st_mode : m_fileStat.st_mode & ~kRunsAsOwner;
}

}  // namespace ZET
