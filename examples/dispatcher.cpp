// A tiny dispatcher: listens for notices on a UDP port of 127.0.0.1, prints
// each one, and answers the requests for the one function it serves,
// "Lookup", from a small table of addresses.
//
//   dispatcher PORTFILE COUNT
// writes the port it listens on to PORTFILE, handles COUNT notices and ends
// (or after ten idle seconds).  Run it with "Tarnwick" set to the spool root.
#include <tarnwick.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

static int Listen(int* port)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in addr = sockaddr_in();
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = inet_addr("127.0.0.1");
    socklen_t len = sizeof addr;
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&addr), len) != 0
        || getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0)
        return -1;
    timeval idle = {10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &idle, sizeof idle);
    *port = ntohs(addr.sin_port);
    return fd;
}

// The answering side of a request: read the control file named in the
// notice, add the answer, write it back and wake the asker.
static void ServeLookup(const SString& id)
{
    SControl control;
    if (!control.Read(id)) {
        printf("  cannot read the request %s\n", id.Data());
        return;
    }
    SRequest request(control);
    SString question = request.Get("Question:").Get(0);
    request["Answer:"] = SStringList(question == "postmaster" ? "hostmaster@example.org" : "unknown");
    printf("  answered \"%s\": %s\n", question.Data(), request.Answer() ? "sent" : "failed");
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: dispatcher PORTFILE COUNT\n");
        return 2;
    }
    int port = 0;
    int fd = Listen(&port);
    // Written whole and renamed, so that a waiting script never reads half.
    SString portFile(argv[1]);
    if (fd < 0 || !MapFileWrite(portFile + ".new", SString(port))
        || !Rename(portFile + ".new", portFile)) {
        perror("dispatcher");
        return 1;
    }
    for (int n = atoi(argv[2]); n > 0; n--) {
        char buf[1024];
        ssize_t len = recv(fd, buf, sizeof buf, 0);
        if (len < 0)
            break;
        SStringList fields = SString(buf, static_cast<int>(len)).SplitExact("\n");
        printf("notice: id %s, function %s, type %s, priority %s\n", fields.Get(0).Data(),
               fields.Get(1).Data(), fields.Get(2).Data(), fields.Get(3).Data());
        if (fields.Get(1) == "Lookup")
            ServeLookup(fields.Get(0));
        fflush(stdout);
    }
    close(fd);
    return 0;
}
