#include "PasswordHash.h"

#include <semaphore>
#include <sodium.h>
#include <stdexcept>

namespace PasswordHash {
namespace {

void ready() {
    static const bool initialised = sodium_init() >= 0;
    if (!initialised)
        throw std::runtime_error("libsodium can't start");
}

// Each hash takes 64 MiB for a moment; a burst of sign-ins computes two at a time and queues
// the rest, so guesses in parallel can't run the server out of memory.
std::counting_semaphore<2>& hashing() {
    static std::counting_semaphore<2> room(2);
    return room;
}

struct Slot {
    Slot() { hashing().acquire(); }
    ~Slot() { hashing().release(); }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;
};

} // namespace

QString hash(const QString& password) {
    ready();
    const QByteArray bytes = password.toUtf8();
    char out[crypto_pwhash_STRBYTES];
    Slot slot;
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
    Slot slot;
    return crypto_pwhash_str_verify(hashText.constData(), bytes.constData(),
                                    static_cast<unsigned long long>(bytes.size())) == 0;
}

void verifyNobody(const QString& password) {
    // A hash with the same cost as a real one, of a password nobody can type.
    static const QString dummy = hash(QStringLiteral("\x01 no account \x01"));
    verify(dummy, password);
}

} // namespace PasswordHash
