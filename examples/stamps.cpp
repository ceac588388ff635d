// stamps: prints the stamps a mail module puts on a message (the RFC 822
// date, a message id, the log-file stamp), then the MD5 digest and the
// Base64 form of its argument, and the stored form of the argument taken as
// a password, with a check of the right and of a wrong password.
//
// usage: stamps TEXT

#include <iostream>

#include <tarnwick.h>

static const char* Verdict(int match)
{
    return match ? "accepted" : "refused";
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: stamps TEXT\n";
        return 2;
    }
    SString text(argv[1]);
    std::cout << "Date:       " << RFC822Date() << "\n"
              << "Message-ID: <" << MessageIdDate() << "." << ProcessIdString() << "."
              << SString(RandomInt(1000000)) << "@" << GetEnv("HOSTNAME") << ">\n"
              << "log file:   " << LogFileDate() << ".log\n"
              << "day number: " << SString(DaysSince1970()) << "\n"
              << "MD5:        " << MD5(text) << "\n"
              << "Base64:     " << EncodeBase64(text);

    SString stored = StringCopy(text);
    std::cout << "stored:     " << stored << "\n"
              << "check:      right password " << Verdict(StringComp(text, stored))
              << ", wrong password " << Verdict(StringComp(text + "x", stored)) << "\n";
    return 0;
}
