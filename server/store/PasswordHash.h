#pragma once

#include <QString>

// Passwords are kept only as salted, slow hashes.
namespace PasswordHash {

QString hash(const QString& password);
bool verify(const QString& stored, const QString& password);

} // namespace PasswordHash
