// DecodeBase64 on arbitrary text, and the round trip: whatever bytes are
// encoded decode back to themselves.
#include "Smime.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    SString input(reinterpret_cast<const char*>(data), static_cast<int>(size));
    SString decoded = DecodeBase64(input);
    SString again = DecodeBase64(EncodeBase64(input));
    if (static_cast<size_t>(again.Length()) != size || (size && memcmp(again.Data(), data, size) != 0))
        abort();
    (void)decoded;
    return 0;
}
