// MD5 through libmd, hexadecimal, and the stored password form.

#include "Ssecurity.h"

#include <md5.h>

#include <memory>

#include "Sdatetime.h"
#include "Smisc.h"
#include "Sprocess.h"

namespace {

const int SaltLength = 32;

// The digest half of a stored form.
SString SaltedDigest(const SString& password, const SString& salt)
{
    return MD5(salt + PasswordSeparatorFirst + password + PasswordSeparatorSecond + salt);
}

SString NewSalt()
{
    SString noise("");
    for (int i = 0; i < 10; i++)
        noise += (char)RandomInt(256);
    return MD5(noise + ProcessIdString() + RFC822Date());
}

// Equal bytes, examined in full so that the time taken tells nothing about
// where the first difference is.
int SameBytes(const char* a, const char* b, int n)
{
    unsigned char diff = 0;
    for (int i = 0; i < n; i++)
        diff |= (unsigned char)(a[i] ^ b[i]);
    return diff == 0;
}

}  // namespace

SString MD5(const SString& s)
{
    MD5_CTX context;
    unsigned char digest[MD5_DIGEST_LENGTH];
    MD5Init(&context);
    if (s.Length() > 0)
        MD5Update(&context, (const uint8_t*)s.Data(), s.Length());
    MD5Final(digest, &context);
    return Hex(SString((const char*)digest, MD5_DIGEST_LENGTH));
}

SString Hex(const SString& s)
{
    static const char digits[] = "0123456789abcdef";
    int n = s.Length();
    std::unique_ptr<char[]> text(new char[2 * n + 1]);
    const unsigned char* in = (const unsigned char*)s.Data();
    for (int i = 0; i < n; i++) {
        text[2 * i] = digits[in[i] >> 4];
        text[2 * i + 1] = digits[in[i] & 15];
    }
    return SString(text.get(), 2 * n);
}

SString StringCopy(const SString& password)
{
    SString salt = NewSalt();
    return SaltedDigest(password, salt) + salt;
}

int StringComp(const SString& password, const SString& stored)
{
    if (stored.Length() != 2 * SaltLength)
        return 0;
    SString digest = SaltedDigest(password, stored.Segment(SaltLength, SaltLength));
    return SameBytes(digest.Data(), stored.Data(), SaltLength);
}
