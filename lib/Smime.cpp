// Base64.  The inner loops write into plain byte buffers, free of string
// bookkeeping: the encoder straight into its result, whose size is known in
// advance; the decoder into a scratch buffer of the largest possible size,
// copied into the result once its length is known.

#include "Smime.h"

#include <memory>

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const int LineChars = 76;
const unsigned char Pad = 64;    // the value of "=" in the decoding table
const unsigned char Skip = 127;  // every byte outside the alphabet

// Four characters for three bytes.
char* EncodeGroup(const unsigned char* in, char* out)
{
    unsigned bits = (in[0] << 16) | (in[1] << 8) | in[2];
    out[0] = Alphabet[bits >> 18];
    out[1] = Alphabet[(bits >> 12) & 63];
    out[2] = Alphabet[(bits >> 6) & 63];
    out[3] = Alphabet[bits & 63];
    return out + 4;
}

// The last one or two bytes, padded to four characters.
char* EncodeTail(const unsigned char* in, int n, char* out)
{
    unsigned bits = (in[0] << 16) | (n == 2 ? in[1] << 8 : 0);
    out[0] = Alphabet[bits >> 18];
    out[1] = Alphabet[(bits >> 12) & 63];
    out[2] = n == 2 ? Alphabet[(bits >> 6) & 63] : '=';
    out[3] = '=';
    return out + 4;
}

char* EndLine(char* out)
{
    out[0] = '\r';
    out[1] = '\n';
    return out + 2;
}

struct DecodeTable {
    unsigned char value[256];

    constexpr DecodeTable() : value()
    {
        for (int i = 0; i < 256; i++)
            value[i] = Skip;
        for (int i = 0; i < 64; i++)
            value[(unsigned char)Alphabet[i]] = i;
        value[(unsigned char)'='] = Pad;
    }
};

constexpr DecodeTable decodeTable;

char* DecodeGroup(unsigned bits, char* out)
{
    out[0] = (char)(bits >> 16);
    out[1] = (char)(bits >> 8);
    out[2] = (char)bits;
    return out + 3;
}

// The final group: one byte for "xx==", two for "xxx=".
char* DecodePadded(const unsigned char* q, char* out)
{
    unsigned bits = (q[0] << 18) | (q[1] << 12) | (q[2] << 6);
    out[0] = (char)(bits >> 16);
    if (q[2] == Pad)
        return out + 1;
    out[1] = (char)(bits >> 8);
    return out + 2;
}

}  // namespace

SString EncodeBase64(const SString& s)
{
    int n = s.Length();
    if (n == 0)
        return s.Defined() ? SString("\r\n") : SString();
    int chars = (n + 2) / 3 * 4;
    int lines = (chars + LineChars - 1) / LineChars;
    int size = chars + 2 * lines;
    SString text;
    char* start = text.Resize(size);
    char* out = start;
    const unsigned char* in = (const unsigned char*)s.Data();
    int i = 0;
    for (int column = 0; i + 3 <= n; i += 3) {
        out = EncodeGroup(in + i, out);
        column += 4;
        if (column == LineChars) {
            out = EndLine(out);
            column = 0;
        }
    }
    if (i < n)
        out = EncodeTail(in + i, n - i, out);
    if (out - start < size)
        EndLine(out);
    return text;
}

SString DecodeBase64(const SString& s)
{
    int n = s.Length();
    std::unique_ptr<char[]> bytes(new char[n / 4 * 3 + 1]);
    const unsigned char* in = (const unsigned char*)s.Data();
    const unsigned char* table = decodeTable.value;
    char* out = bytes.get();
    unsigned char q[4];
    int held = 0;
    for (int i = 0; i < n;) {
        // Fast path: four alphabet characters in a row start a new group.
        if (held == 0 && i + 4 <= n) {
            unsigned a = table[in[i]], b = table[in[i + 1]];
            unsigned c = table[in[i + 2]], d = table[in[i + 3]];
            if ((a | b | c | d) < 64) {
                out = DecodeGroup((a << 18) | (b << 12) | (c << 6) | d, out);
                i += 4;
                continue;
            }
        }
        unsigned char v = table[in[i++]];
        if (v > Pad)
            continue;
        q[held++] = v;
        if (held < 4)
            continue;
        held = 0;
        if (q[3] == Pad) {
            out = DecodePadded(q, out);
            break;
        }
        out = DecodeGroup((q[0] << 18) | (q[1] << 12) | (q[2] << 6) | q[3], out);
    }
    return SString(bytes.get(), (int)(out - bytes.get()));
}
