#pragma once

#include <QByteArray>
#include <QString>

// Contact pictures, drawn rather than stored: a head and shoulders on a colour of the name.
namespace Pictures {

// PNG bytes for a picture name (letters, digits, "-" and "_" only); empty for any other name.
QByteArray Png(const QString& name);

} // namespace Pictures
