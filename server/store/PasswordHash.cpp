#include "PasswordHash.h"

#include <sodium.h>
#include <stdexcept>

namespace PasswordHash {
namespace {

void ready() {
    static const bool initialised = sodium_init() >= 0;
    if (!initialised)
        throw std::runtime_error("libsodium can't start");
}

} // namespace

QString hash(const QString& password) {
    ready();
    const QByteArray bytes = password.toUtf8();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(out, bytes.constData(), static_cast<unsigned long long>(bytes.size()),
                          crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
        throw std::runtime_error("out of memory while hashing a password");
    return QString::fromLatin1(out);
}

bool verify(const QString& stored, const QString& password) {
    ready();
    const QByteArray hashText = stored.toLatin1();
    const QByteArray bytes = password.toUtf8();
    if (hashText.isEmpty() || hashText.size() >= crypto_pwhash_STRBYTES)
        return false;
    return crypto_pwhash_str_verify(hashText.constData(), bytes.constData(),
                                    static_cast<unsigned long long>(bytes.size())) == 0;
}

} // namespace PasswordHash
