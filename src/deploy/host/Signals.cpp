#include "deploy/host/Signals.h"

#include <unistd.h>

#include <cstring>
#include <string>

#include "deploy/host/Words.h"

namespace ZET::Deploy {

namespace {

constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t caughtSignal = 0;
volatile std::sig_atomic_t isUnanswered[NSIG] = {};  // by number: no `Interrupted` has reported it yet
int memories = 0;

void Catch(int number) {
    caughtSignal = number;
    isUnanswered[number] = 1;
}

void CountAsAnswered() {
    for (const int number : kSignals)
        isUnanswered[number] = 0;
}

/// To the process, which is where they came: this thread may not be the one that handles them.
void SendUnanswered() {
    for (const int number : kSignals) {
        if (isUnanswered[number] == 0) continue;
        isUnanswered[number] = 0;
        kill(getpid(), number);
    }
}

}  // namespace

SignalMemory::SignalMemory() {
    ++memories;
}

SignalMemory::~SignalMemory() {
    if (--memories != 0) return;
    caughtSignal = 0;
    CountAsAnswered();
}

SignalGuard::SignalGuard() {
    struct sigaction action = {};
    // Without SA_RESTART, so that a call that waits for something that may never come ends, too.
    action.sa_handler = Catch;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &m_former[i]);
        if (m_former[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

SignalGuard::~SignalGuard() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &m_former[i], nullptr);
    const bool isAskedForYet = memories > 1;
    if (!isAskedForYet) SendUnanswered();
}

bool SignalGuard::Caught() {
    return caughtSignal != 0;
}

void SignalGuard::Check() {
    if (!Caught()) return;
    CountAsAnswered();
    throw Interrupted({.text = Words("ended by a signal (%s) before all was done", strsignal(caughtSignal)),
                       .remedy = _("run the command again")});
}

}  // namespace ZET::Deploy
