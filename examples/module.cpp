// A module that hands a message on and then asks another module a question.
//
// It spools a message (header, body and control file), notifies the
// dispatcher, then asks for the function "Lookup" with an SRequest and
// prints the answer.  Run it with "Tarnwick", "ModuleName" and
// "DispatchSocket" set.
#include <tarnwick.h>

#include <cstdio>

// Spools one message under id and tells the dispatcher about it.
static int HandOn(const SString& id)
{
    SHeader header;
    header["From:"] = SStringList("<alice@example.org>");
    header["To:"] = SStringList("<bob@example.net>");
    header["Subject:"] = SStringList("spool demo");
    SBody body;
    body.PutFilename(GetEnv("Tarnwick") + "/messages/" + id + "-Body");
    SControl control;
    control["Function:"] = SStringList("Deliver");
    control["Control-Type:"] = SStringList("Message");
    control["Priority:"] = SStringList("2");
    control["Host-To:"] = SStringList("mx.example.net");
    if (!header.Write(id) || !MapFileWrite(body.GetFilename(), "Hello Bob.\n")
        || !control.Write(id)) {
        ProcessError("cannot spool the message", "HandOn", SStringList(id));
        return 0;
    }
    printf("spooled %s and notified the dispatcher: %s\n", id.Data(),
           control.Notify() ? "yes" : "no");
    return 1;
}

int main()
{
    SetNewHandler();
    // A request takes the id time + "." + pid, and removes every file of that
    // id when it is done: the message gets an id of its own.
    if (!HandOn(MessageIdDate() + "." + ProcessIdString() + ".mail"))
        return 1;
    SRequest request;
    request["Question:"] = SStringList("postmaster");
    if (!request.Ask("Lookup", 2.0)) {
        printf("no answer to the lookup\n");
        return 1;
    }
    printf("answer: %s (trace: %s)\n", request.Get("Answer:").Get(0).Data(),
           request.Get("Trace:").Join(", ").Data());
    return 0;
}
