#pragma once

#include <QFile>
#include <QtGlobal>

// One of the rowset files under tests/wire/samples, as the server sends it.
inline QByteArray sample(const char* name) {
    QFile f(QStringLiteral(TAVLO_WIRE_SAMPLES "/") + QLatin1String(name));
    if (!f.open(QIODevice::ReadOnly))
        qFatal("missing sample %s", name);
    return f.readAll();
}
