#pragma once

#include <QString>

// Passwords are kept only as salted, slow hashes.
namespace PasswordHash {

QString hash(const QString& password);
bool verify(const QString& stored, const QString& password);
// The work of a verify for a user name nobody has, so that an unknown user and a wrong
// password take the same time.
void verifyNobody(const QString& password);

} // namespace PasswordHash
