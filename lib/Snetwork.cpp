// Snetwork: network functions beside the socket classes.
#include "Snetwork.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

namespace {

// The signals that must be able to end a wait: those a server is told to
// stop, reload or reap children with, and the alarm and broken pipe it may
// use as watchdogs.
const int InterruptingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD};

// Sets or clears SA_RESTART in each disposition, leaving everything else of
// it as it is.  A disposition is only written when the flag changes, and
// clearing skips SIG_DFL and SIG_IGN, which end no wait whatever their flags
// say: every wait costs system calls, and these are the ones it can spare.
void SetRestart(int on)
{
    for (int sig : InterruptingSignals) {
        struct sigaction action;
        if (sigaction(sig, nullptr, &action) != 0)
            continue;
        int restarts = (action.sa_flags & SA_RESTART) != 0;
        if (restarts == on)
            continue;
        if (on) {
            action.sa_flags |= SA_RESTART;
        } else {
            if (!(action.sa_flags & SA_SIGINFO) && (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN))
                continue;
            action.sa_flags &= ~SA_RESTART;
        }
        sigaction(sig, &action, nullptr);
    }
}

}  // namespace

int Select(int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds,
    struct timeval* timeout)
{
    SetRestart(0);
    int result = select(nfds, readfds, writefds, exceptfds, timeout);
    int selectErrno = errno;
    SetRestart(1);
    errno = selectErrno;
    return result;
}

// Name resolution.  getaddrinfo for the forward lookup; gethostbyaddr_r for
// the reverse one, being the resolver call that also reports aliases.

namespace {

// The address inside "[...]" or "[IPv6:...]", or the text itself.  A text
// holding a NUL byte cannot reach the resolver whole: it gives "".
std::string BareAddress(const SString& text)
{
    std::string s(text.Data() ? text.Data() : "", text.Length());
    if (s.find('\0') != std::string::npos)
        return "";
    if (s.size() >= 2 && s.front() == '[' && s.back() == ']')
        s = s.substr(1, s.size() - 2);
    if (s.size() > 5 && strncasecmp(s.c_str(), "IPv6:", 5) == 0)
        s.erase(0, 5);
    return s;
}

void PushUnique(SStringList& list, const char* text)
{
    if (!list.Contains(text))
        list.Push(text);
}

// The family of a numeric IPv4 or IPv6 address, its bytes put into bytes
// (room for an IPv6 address); 0 when the text is neither.
int NumericAddress(const std::string& text, unsigned char* bytes)
{
    if (inet_pton(AF_INET, text.c_str(), bytes) == 1)
        return AF_INET;
    if (inet_pton(AF_INET6, text.c_str(), bytes) == 1)
        return AF_INET6;
    return 0;
}

// A text that inet_aton reads as a number but that is no dotted quad
// ("127.1", "0x7f.1", "2130706433"): getaddrinfo would answer an address for
// it, yet no host is named so.
int IsNumericShorthand(const std::string& text)
{
    struct in_addr address;
    return inet_aton(text.c_str(), &address) && inet_pton(AF_INET, text.c_str(), &address) != 1;
}

// The host entry of one address family, with the scratch buffer grown until
// the entry fits.  Null when there is none.
struct hostent* ReverseEntry(const void* address, socklen_t size, int family, struct hostent* entry,
    std::vector<char>& buffer)
{
    struct hostent* found = nullptr;
    int status = 0;
    buffer.resize(1024);
    while (gethostbyaddr_r(address, size, family, entry, buffer.data(), buffer.size(), &found, &status)
            == ERANGE
        && buffer.size() < (1u << 20))
        buffer.resize(buffer.size() * 2);
    return found;
}

}  // namespace

SStringList GetHostByName(const SString& name)
{
    SStringList result;
    result.Reset();
    std::string host = BareAddress(name);
    struct addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    struct addrinfo* found = nullptr;
    if (host.empty() || IsNumericShorthand(host) || getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0)
        return result;
    for (struct addrinfo* a = found; a; a = a->ai_next) {
        char text[INET_ADDRSTRLEN];
        const struct sockaddr_in* in = reinterpret_cast<const struct sockaddr_in*>(a->ai_addr);
        if (inet_ntop(AF_INET, &in->sin_addr, text, sizeof text))
            PushUnique(result, text);
    }
    freeaddrinfo(found);
    return result;
}

SStringList GetHostByAddr(const SString& address)
{
    SStringList result;
    result.Reset();
    std::string text = BareAddress(address);
    unsigned char bytes[sizeof(struct in6_addr)];
    int family = NumericAddress(text, bytes);
    if (!family)
        return result;
    struct hostent entry;
    std::vector<char> buffer;
    socklen_t size = family == AF_INET ? sizeof(struct in_addr) : sizeof(struct in6_addr);
    struct hostent* found = ReverseEntry(bytes, size, family, &entry, buffer);
    if (!found || !found->h_name)
        return result;
    PushUnique(result, found->h_name);
    for (char** alias = found->h_aliases; alias && *alias; alias++)
        PushUnique(result, *alias);
    return result;
}
