// Error reports written as error control files for the error-handling
// module, with the standard error stream as the last resort, and the
// out-of-memory handler.
#include "halyard.h"

#include <cerrno>
#include <iostream>
#include <new>

#include <unistd.h>

#include "Sdatetime.h"
#include "Sprocess.h"

namespace {

const int ExitOutOfMemory = 106;

// The id counters of the two functions that make new report files.
int processErrorCount = 1;
int notifyErrorCount = 1;

SString ModuleName()
{
    return GetEnv("ModuleName");
}

// Sets the fields that every report holds.  errorNumber is errno as the
// caller left it.
void SetErrorFields(SControl& control, const SString& what, const SString& where,
    const SStringList& text, int errorNumber)
{
    control["Error:"] = SStringList(ModuleName() + ":" + where + " (" + what + ")");
    control["Error-Text:"] = text;
    if (errorNumber != 0)
        control["Error-Number:"] = SStringList(SString(errorNumber));
}

// Writes control and notifies the dispatcher; when the write fails, the
// report goes to the standard error stream so that it is not lost.
void WriteReport(SControl& control)
{
    if (control.Write()) {
        control.Notify();
        return;
    }
    SString text("");
    text << control;
    std::cerr << text << std::endl;
}

// A new report file, named with the next value of counter.
void NewReport(int& counter, const SString& what, const SString& where,
    const SStringList& text, int errorNumber)
{
    SControl control;
    control.PutFilename(MessageIdDate() + "." + ProcessIdString() + "." + SString(counter++));
    control["Function:"] = SStringList("Error-Handler");
    control["Control-Type:"] = SStringList("Error");
    control["Priority:"] = SStringList("1");
    SetErrorFields(control, what, where, text, errorNumber);
    WriteReport(control);
}

}  // namespace

void ProcessError(SControl& control, const SString& what, const SString& where,
    const SStringList& text)
{
    int errorNumber = errno;
    control["Function:"] = SStringList("Error-Handler");
    SetErrorFields(control, what, where, text, errorNumber);
    WriteReport(control);
}

void ProcessError(const SString& what, const SString& where, const SStringList& text)
{
    NewReport(processErrorCount, what, where, text, errno);
}

void ProcessNotifyError(const SControl& control, const SString& what,
    const SString& where, const SStringList& text)
{
    int errorNumber = errno;
    if (control.Get("Trace:").Contains("Error-Handler")) {
        std::cerr << LogFileDate() + ":" + ModuleName() + ":ProcessNotifyError:" + text.Join()
                + "\n";
        return;
    }
    NewReport(notifyErrorCount, what, where, text, errorNumber);
}

void SetNewHandler()
{
    std::set_new_handler(NewHandler);
}

void NewHandler()
{
    _exit(ExitOutOfMemory);
}
