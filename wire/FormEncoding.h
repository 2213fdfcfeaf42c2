#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace wire {

namespace form {
// The gateway's encoder: letters and digits are copied, every other character is written as
// '%' and the upper-case hex of its single-byte code ("%0X" under 16). No '+' is produced.
QString URLEncode(const QString& text);

// Decodes an application/x-www-form-urlencoded body and returns the value of one field,
// percent-decoded ('+' as blank) and read as Windows-1252. Returns nullopt and sets *error
// when the field is missing, appears more than once, or has a bad percent escape.
std::optional<QString> field(QByteArrayView body, QByteArrayView name, QString* error = nullptr);
} // namespace form

} // namespace wire
