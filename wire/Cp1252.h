#pragma once

#include <QByteArray>
#include <QString>

namespace wire {

// The single-byte code page of the program's text (Windows-1252). A character outside it
// encodes as '?'; the five unassigned bytes decode to the C1 control of the same value.
namespace cp1252 {
QByteArray encode(QStringView text);
QString decode(QByteArrayView bytes);
char encodeChar(QChar c); // '?' when the character has no single-byte form
} // namespace cp1252

} // namespace wire
