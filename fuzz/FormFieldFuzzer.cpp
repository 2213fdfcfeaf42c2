// Feeds arbitrary bodies to the form decoder. A decoded statement, encoded again the way the
// client encodes it, must decode to the same text.
#include "wire/FormEncoding.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView body(reinterpret_cast<const char*>(data), qsizetype(size));
    QString error;
    const auto value = wire::form::field(body, "strSQL", &error);
    if (!value) {
        if (error.isEmpty())
            std::abort();
        return 0;
    }
    const QByteArray again = "strSQL=" + wire::form::URLEncode(*value).toLatin1();
    const auto back = wire::form::field(again, "strSQL");
    if (!back || *back != *value) {
        std::fprintf(stderr, "decode, encode, decode changed the text\n");
        std::abort();
    }
    return 0;
}
