// Error reports and the out-of-memory handler of a module.
//
// A module that meets a failure it cannot deal with reports it as an error
// control file in the spool (SMessage.h) and notifies the dispatcher, so that
// the module serving "Error-Handler" can act on it.  A report carries:
//   "Function:"      "Error-Handler"
//   "Control-Type:"  "Error"   (only in a new report file)
//   "Priority:"      "1"       (only in a new report file)
//   "Error:"         module + ":" + where + " (" + what + ")"
//   "Error-Text:"    the caller's lines, unchanged
//   "Error-Number:"  errno in decimal, only when errno is nonzero
// where module is "ModuleName" at the time of the report.  errno is read on
// entry: report straight after the failing call, without clearing it.
//
// A new report file is named MessageIdDate() + "." + ProcessIdString() + "."
// + n in the control directory.  ProcessError and ProcessNotifyError each
// count their own n from 1.  Intended: the two counters are kept apart, so a
// report of each made in the same second gets the same id and the later file
// replaces the earlier.
//
// Failure policy: the reporting functions never fail visibly.  When the report
// cannot be written, its named-list text and a line end go to the standard
// error stream instead; a failed notice is ignored (the file stays for
// whoever scans the control directory).
#ifndef TARNWICK_HALYARD_H
#define TARNWICK_HALYARD_H

#include "SMessage.h"
#include "SString.h"
#include "SStringList.h"

// Turns control into an error report: sets "Function:", "Error:",
// "Error-Text:" and (errno nonzero) "Error-Number:", keeps every other key
// and the file name, writes it (adding this module to "Trace:") and notifies.
void ProcessError(SControl& control, const SString& what, const SString& where,
    const SStringList& text);
// Writes a new error report file and notifies.
void ProcessError(const SString& what, const SString& where, const SStringList& text);
// As the form above, with its own counter, for a failure concerning control;
// nothing of control goes into the report.  When control has already been
// through the error handler ("Error-Handler" in its "Trace:"), writes only
// LogFileDate() + ":" + module + ":ProcessNotifyError:" + the text lines
// joined without separator + "\n" to the standard error stream, so that an
// error about an error report cannot start an endless chain of reports.
void ProcessNotifyError(const SControl& control, const SString& what,
    const SString& where, const SStringList& text);

// Installs NewHandler for failed allocations with new; call once at start.
void SetNewHandler();
// Ends the process at once with exit status 106: no message, no clean-up,
// no flushing of streams.
void NewHandler();

#endif
