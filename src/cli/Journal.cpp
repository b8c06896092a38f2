#include "cli/Journal.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "cli/HistoryWords.h"
#include "deploy/history/HistoryEntries.h"
#include "posix/Descriptor.h"
#include "posix/Printable.h"

namespace ZET::Cli {

namespace {

constexpr char kSocket[] = "/run/systemd/journal/socket";
constexpr std::size_t kMostFiles = 100;  ///< the limit in a record, which must fit into one message

/// A record in the journal's protocol: NAME=VALUE, or the name alone, the value's size and the value.
class Record {
  public:
    void Add(const char* name, const std::string& value) {
        m_text += name;
        if (value.find('\n') == std::string::npos) {
            m_text += "=" + value + "\n";
            return;
        }
        m_text += "\n";
        for (int bit = 0; bit < 64; bit += 8)
            m_text += static_cast<char>(static_cast<std::uint64_t>(value.size()) >> bit);
        m_text += value + "\n";
    }

    void AddUnlessEmpty(const char* name, const std::string& value) {
        if (!value.empty()) Add(name, value);
    }

    bool Send() const {
        const Descriptor sender(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        if (!sender.IsOpen()) return false;
        struct sockaddr_un to = {};
        to.sun_family = AF_UNIX;
        std::memcpy(to.sun_path, kSocket, sizeof kSocket);
        return sendto(sender, m_text.data(), m_text.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                      reinterpret_cast<const struct sockaddr*>(&to), sizeof to) >= 0;
    }

  private:
    std::string m_text;
};

Record RecordOf(const std::string& program, const Deploy::HistoryEntry& entry,
                const std::vector<std::string>& paths) {
    Record record;
    record.Add("MESSAGE", JournalText(entry, paths));
    record.Add("PRIORITY", std::to_string(entry.outcome == "done" ? LOG_NOTICE : LOG_WARNING));
    record.Add("SYSLOG_FACILITY", std::to_string(LOG_FAC(LOG_DAEMON)));
    record.Add("SYSLOG_IDENTIFIER", program);
    record.Add("ZET_CHANGE", std::to_string(entry.number));
    record.Add("ZET_OUTCOME", entry.outcome);
    record.Add("ZET_ROLE", Deploy::NameOf(entry.role));
    record.Add("ZET_COMMAND", Deploy::CommandOf(entry));
    record.Add("ZET_USER", entry.userName);
    record.AddUnlessEmpty("ZET_LOGIN_USER", entry.loginUser);
    record.AddUnlessEmpty("ZET_SUDO_USER", entry.sudoUser);
    record.AddUnlessEmpty("ZET_MESSAGE", entry.message);
    record.Add("ZET_FILE_COUNT", std::to_string(paths.size()));
    for (std::size_t i = 0; i < paths.size() && i < kMostFiles; ++i)
        record.Add("ZET_FILE", paths[i]);
    return record;
}

}  // namespace

std::string JournalText(const Deploy::HistoryEntry& entry, const std::vector<std::string>& paths) {
    std::string text = "change " + std::to_string(entry.number) + " by " + WhoOf(entry) + ": ";
    if (entry.outcome != "done") text += entry.outcome + ": ";
    text += Deploy::CommandOf(entry);
    for (std::size_t i = 0; i < paths.size() && i < kMostFiles; ++i)
        text += (i == 0 ? ": " : ", ") + paths[i];
    if (paths.size() > kMostFiles) text += " and " + std::to_string(paths.size() - kMostFiles) + " more";
    return Printable(text);
}

bool HasJournal() {
    return access(kSocket, F_OK) == 0;
}

bool TellJournal(const std::string& program, const Deploy::HistoryEntry& entry,
                 const std::vector<std::string>& paths) {
    return RecordOf(program, entry, paths).Send();
}

}  // namespace ZET::Cli
