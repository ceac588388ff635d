// Spool files and requests, against a private root directory, with real UDP
// sockets on 127.0.0.1 and real child processes.
#include "SMessage.h"

#include <chrono>
#include <string>
#include <tuple>
#include <vector>

#include "spool_fixture.h"

namespace {

using Clock = std::chrono::steady_clock;

using Spool = SpoolTest;

TEST_F(Spool, NamesTraceAndFailedWrites)
{
    // Header paths are always under the messages directory, even a full one.
    SHeader header;
    header.PutFilename("/a/b");
    EXPECT_EQ(root + "/messages//a/b-Header b", header.SMessage::GetFilename() + " " + header.GetFilename());

    SControl unnamed;
    SString("Trace: smtp\nFunction: Deliver\n") >> unnamed;
    EXPECT_TRUE(!unnamed.Write() && unnamed.ErrorCode() == SMessage::ErrNoFilename);
    EXPECT_TRUE(!unnamed.Read("missing") && unnamed.ErrorCode() == 0);
    // Every write adds a trace entry and moves the key last, the failed one
    // above included.
    ASSERT_TRUE(unnamed.Write("m1") && unnamed.Write());
    SString old = Text("control/m1-Control");
    EXPECT_EQ(SString("Function: Deliver\nTrace: smtp\nTrace: relay\nTrace: relay\nTrace: relay\n"), old);

    // A stale ".temp" stops the write and is cleared; a rename onto a
    // directory fails and takes its ".temp" with it.
    Touch("control/m1-Control.temp");
    EXPECT_EQ(0, unnamed.Write());
    MakeDir(P("control/dir-Control"), 0700);
    EXPECT_EQ(0, unnamed.Write("dir"));
    EXPECT_EQ(old, Text("control/m1-Control"));
    EXPECT_EQ(SString("dir-Control m1-Control"), Names("control"));
}

TEST_F(Spool, DeferRemoveAndLink)
{
    SControl control;
    control["Host-To:"].Push("mx.example");
    ASSERT_TRUE(control.Write("m1") && control.Defer());
    EXPECT_EQ(SString("m1-Control"), Names("deferred/relay/mx.example"));

    // Files present (Header, Body, Control) -> result; all three always go.
    std::pair<std::string, int> rows[] = {{"HBC", 1}, {"C", 1}, {"HC", 0}, {"BC", 0}, {"HB", 0}};
    for (const auto& row : rows) {
        for (char c : row.first)
            Touch(c == 'H' ? "messages/m1-Header" : c == 'B' ? "messages/m1-Body" : "control/m1-Control");
        EXPECT_EQ(row.second, control.RemoveMessage()) << row.first;
        EXPECT_EQ(SString(""), Names("messages") + Names("control"));
    }

    Touch("messages/m1-Header");
    EXPECT_EQ(0, control.LinkMessage("m3"));  // no body: the new header goes again
    Touch("messages/m1-Body");
    EXPECT_EQ(1, control.LinkMessage("m3"));
    EXPECT_EQ(SString("m1-Body m1-Header m3-Body m3-Header"), Names("messages"));
}

// Writers keep replacing one control file while readers keep reading it;
// every read must find one writer's complete file.
TEST_F(Spool, ReplacementIsAtomicUnderConcurrentWritersAndReaders)
{
    auto write = [](int round) {
        SControl control;
        for (int k = 0; k < 20; k++)
            control[SString("Key-") + SString(k) + ":"].Push(SString(round));
        return control.Write("shared");
    };
    // A torn or mixed file lacks keys or ends with another round than it starts.
    auto readWhole = [] {
        SControl control;
        return control.Read("shared") && control.Keys().Count() == 21 &&
               control.Get("Key-19:").Join() == control.Get("Key-0:").Join();
    };
    ASSERT_EQ(1, write(0));
    Clock::time_point until = Clock::now() + std::chrono::milliseconds(700);
    std::vector<pid_t> children;
    for (int child = 1; child <= 6; child++)
        children.push_back(Spawn([&] {
            for (int round = child * 100000; Clock::now() < until; round++)
                if (child % 2 ? !write(round) : !readWhole())
                    return 1;
            return 0;
        }));
    for (pid_t child : children)
        EXPECT_EQ(0, Status(child));
    EXPECT_EQ(SString("shared-Control"), Names("control"));
}

TEST_F(Spool, NotifySendsTheNoticeToTheDispatchPort)
{
    std::string port = std::to_string(dispatcher.port), fraction = port + ".9";
    SControl full, bare;
    SString("Function: Deliver\nControl-Type: Message\nPriority: 2\n") >> full;
    full.PutFilename("m1");
    bare.PutFilename("/elsewhere/m2-Control");
    // control, "DispatchSocket" (null: unset), the notice (null: none is sent)
    const std::tuple<SControl*, const char*, const char*> rows[] = {
        {&full, port.c_str(), "m1\nDeliver\nMessage\n2"}, {&bare, fraction.c_str(), "m2\n\n\n"},
        {&full, nullptr, nullptr}, {&full, "0", nullptr}, {&full, "65537", nullptr},
    };
    for (auto [control, setting, notice] : rows) {
        setting ? setenv("DispatchSocket", setting, 1) : unsetenv("DispatchSocket");
        EXPECT_EQ(notice != nullptr, control->Notify()) << setting;
        EXPECT_EQ(notice ? notice : "none", dispatcher.Next(notice ? 1000 : 50));
    }
}

using Requests = SpoolTest;

// A child process plays the dispatcher and the answering module: it takes
// the notice, reads the request it names and hands it to answer().
pid_t Serve(Receiver& dispatcher, std::function<int(SRequest&)> answer)
{
    return Spawn([&dispatcher, answer] {
        std::string notice = dispatcher.Next(5000);
        setenv("ModuleName", "resolver", 1);
        SControl control;
        if (!control.Read(notice.substr(0, notice.find('\n')).c_str()))
            return 10;
        SRequest request(control);
        return notice.find("\nLookup\nRequest\n3") == std::string::npos ? 11 : answer(request);
    });
}

TEST_F(Requests, AskAndAnswerRoundTrip)
{
    pid_t child = Serve(dispatcher, [](SRequest& request) {
        request["Answer:"] = request.Get("Question:");
        return request.Answer() ? 0 : 12;
    });
    SControl control;
    control["Question:"] = SStringList("postmaster");
    SRequest request(control);
    ASSERT_EQ(1, request.Ask("Lookup", 5.0));
    EXPECT_EQ(0, Status(child));
    EXPECT_EQ(SString("postmaster"), request.Get("Answer:").Get(0));
    EXPECT_EQ(SString("relay resolver"), request.Get("Trace:").Join(" "));
    EXPECT_EQ(SString(""), Names("control"));
}

TEST_F(Requests, FailedAsksAndAnswersLeaveNothingBehind)
{
    SRequest request;
    Clock::time_point start = Clock::now();
    EXPECT_EQ(0, request.Ask("Lookup", 0.3));  // nobody answers
    std::chrono::duration<double> waited = Clock::now() - start;
    EXPECT_TRUE(waited.count() > 0.28 && waited.count() < 3.0) << waited.count();
    EXPECT_NE(std::string::npos, dispatcher.Next(100).find("\nLookup\nRequest\n3"));
    EXPECT_EQ(SString(""), Names("control"));

    pid_t child = Serve(dispatcher, [](SRequest& request) {
        Receiver sender;
        sockaddr_in to = Receiver::To(atoi(request.Get("Return-Path:").Get(0).Data()));
        return sendto(sender.fd, "00", 2, 0, reinterpret_cast<sockaddr*>(&to), sizeof to) == 2 ? 0 : 12;
    });
    EXPECT_EQ(0, request.Ask("Lookup", 5.0));  // two bytes are not an answer
    EXPECT_EQ(0, Status(child));
    unsetenv("DispatchSocket");
    EXPECT_EQ(0, request.Ask("Lookup", 5.0));
    EXPECT_EQ(SString(""), Names("control"));

    // Unlike the notice, the answer port stops at 65535; the message goes.
    request.PutFilename("m1");
    request["Return-Path:"] = SStringList("65536");
    EXPECT_EQ(0, request.Answer());
    EXPECT_EQ(SString(""), Names("control"));
}

}  // namespace
