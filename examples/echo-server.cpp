// echo-server: a line-echo server on 127.0.0.1 built on SSocket.
//
//   echo-server [SECONDS [CONNECTIONS]]
//
// Listens on a free port of 127.0.0.1 and prints "listening on
// 127.0.0.1:PORT".  Serves one connection at a time: greets, answers every
// line with "250 " and the line, says goodbye to "QUIT", and tells a client
// that stays silent for SECONDS (default 2) that it is being dropped.  Exits
// after CONNECTIONS connections (default: never).

#include <tarnwick.h>

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int Listen(int& port)
{
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof addr;
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&addr), size) != 0 || listen(fd, 4) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &size) != 0)
        return -1;
    port = ntohs(addr.sin_port);
    return fd;
}

// The line without its "\r\n".
SString Text(const SString& line)
{
    return line.Segment(0, line.Length() - 2);
}

const char* Serve(int fd, double timeout, int& lines)
{
    SSocket sock(fd, fd);
    sock.SetReadTimeout(timeout);
    sock.SetWriteTimeout(timeout);
    sock << "220 echo ready\r\n";
    sock.Flush();
    const char* end = "closed by the client";
    SString line;
    while (sock >> line) {
        lines++;
        if (Text(line) == "QUIT") {
            sock << "221 bye\r\n";
            end = "quit";
            break;
        }
        sock << "250 ";  // the three writes go out in one send, at Flush
        sock << Text(line);
        sock << "\r\n";
        sock.Flush();
    }
    if (sock.TimedOut()) {
        sock.ClearTimeOut();  // else the goodbye could not be sent
        sock << "421 idle for too long, closing\r\n";
        end = "idle time-out";
    }
    sock.Flush();
    sock.Close();
    return end;
}

}  // namespace

int main(int argc, char** argv)
{
    double timeout = argc > 1 ? atof(argv[1]) : 2.0;
    int connections = argc > 2 ? atoi(argv[2]) : 0;
    int port = 0;
    int listener = Listen(port);
    if (listener < 0) {
        perror("echo-server");
        return 1;
    }
    printf("listening on 127.0.0.1:%d\n", port);
    fflush(stdout);
    for (int served = 0; connections == 0 || served < connections;) {
        int fd = accept(listener, nullptr, nullptr);
        if (fd < 0)
            continue;
        int lines = 0;
        const char* end = Serve(fd, timeout, lines);
        printf("connection %d: %s after %d line%s\n", ++served, end, lines, lines == 1 ? "" : "s");
        fflush(stdout);
    }
    close(listener);
    return 0;
}
