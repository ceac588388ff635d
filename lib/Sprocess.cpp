// Environment and process id.

#include "Sprocess.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

SString GetEnv(const char* name)
{
    const char* value = getenv(name ? name : "");
    return SString(value ? value : "");
}

SString GetEnv(const SString& name)
{
    return GetEnv(name.Data());
}

int PutEnv(const SString& name, const SString& value)
{
    SString text = name + "=" + value;
    char* kept = new char[text.Length() + 1];
    memcpy(kept, text.Data(), text.Length() + 1);
    return putenv(kept) == 0;
}

SString ProcessIdString()
{
    char text[24];
    snprintf(text, sizeof text, "%ld", (long)getpid());
    return SString(text);
}
