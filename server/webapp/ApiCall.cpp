#include "ApiCall.h"

#include <QUrlQuery>

QString ApiCall::query(const QString& name) const {
    return QUrlQuery(QString::fromUtf8(http.query))
        .queryItemValue(name, QUrl::FullyDecoded)
        .replace(QLatin1Char('+'), QLatin1Char(' '));
}

qint64 ApiCall::number(const QString& name) const {
    const QJsonValue value = body.value(name);
    if (value.isDouble()) {
        const double d = value.toDouble();
        return d >= 0 && d < 9e15 && d == double(qint64(d)) ? qint64(d) : -1;
    }
    bool ok = false;
    const qint64 n = value.toString().toLongLong(&ok);
    return ok && n >= 0 ? n : -1;
}

QString ApiCall::text(const QString& name) const {
    return body.value(name).toString();
}
