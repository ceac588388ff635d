// echo-client: talks to echo-server through an SSocket.
//
//   echo-client [-w] PORT LINE...
//
// Connects to 127.0.0.1:PORT, prints the greeting, then sends each LINE
// (with "\r\n") in 4-byte segments a few milliseconds apart, and prints the
// reply to it.  With -w it then stays silent and prints whatever the server
// says until the server closes the connection.

#include <tarnwick.h>

#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int Connect(int port)
{
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = htons(port);
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

void Show(const char* direction, const SString& line)
{
    int n = line.Length();
    while (n > 0 && (line[n - 1] == '\n' || line[n - 1] == '\r'))
        n--;
    printf("%s %.*s\n", direction, n, line.Data() ? line.Data() : "");
}

// Each Flush sends one small segment; the server still reads whole lines.
void SendInPieces(SSocket& sock, const SString& line)
{
    for (int at = 0; at < line.Length(); at += 4) {
        sock << line.Segment(at, 4);
        sock.Flush();
        usleep(5000);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    int wait = argc > 1 && strcmp(argv[1], "-w") == 0;
    if (argc < 2 + wait) {
        fprintf(stderr, "usage: echo-client [-w] PORT LINE...\n");
        return 2;
    }
    int fd = Connect(atoi(argv[1 + wait]));
    if (fd < 0) {
        perror("echo-client");
        return 1;
    }
    SSocket sock(fd, fd);
    sock.SetReadTimeout(10);
    SString line;
    if (sock >> line)
        Show("<", line);
    for (int i = 2 + wait; i < argc; i++) {
        const SString text(argv[i]);
        Show(">", text);
        SendInPieces(sock, text + "\r\n");
        if (sock >> line)
            Show("<", line);
    }
    if (wait) {
        auto start = std::chrono::steady_clock::now();
        while (sock >> line)
            Show("<", line);
        std::chrono::duration<double> silent = std::chrono::steady_clock::now() - start;
        printf("the server closed the connection after %.0f s of silence\n", silent.count());
    }
    sock.Close();
    return 0;
}
