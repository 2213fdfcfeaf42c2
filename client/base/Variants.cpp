#include "base/Variants.h"

#include "base/Regional.h"
#include "base/TLError.h"
#include <QDate>
#include <QDateTime>
#include <QTime>
#include <limits>

namespace Variants {
namespace {
constexpr std::int32_t errInvalidUseOfNull = 94;
constexpr std::int32_t errOverflow = 6;
} // namespace

bool IsNull(const QVariant& value) {
    return !value.isValid() || value.isNull();
}

QString CStr(const QVariant& value) {
    if (!value.isValid())
        Raise(errInvalidUseOfNull);
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 15);
    case QMetaType::QDateTime:
        return Regional::DateText(value.toDateTime());
    case QMetaType::QDate:
        return Regional::DateText(value.toDate());
    case QMetaType::QTime:
        return Regional::TimeText(value.toTime());
    case QMetaType::QByteArray:
        Raise(errTypeMismatch);
    default:
        return value.toString();
    }
}

std::int32_t CLng(const QVariant& value) {
    if (!value.isValid())
        Raise(errInvalidUseOfNull);
    switch (value.typeId()) {
    case QMetaType::QString:
        return Regional::CLng(value.toString());
    case QMetaType::Bool:
        return value.toBool() ? -1 : 0;
    case QMetaType::Double:
    case QMetaType::Float:
        return Regional::CLng(value.toDouble());
    case QMetaType::LongLong:
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::SChar: {
        const qlonglong n = value.toLongLong();
        if (n < std::numeric_limits<std::int32_t>::min() ||
            n > std::numeric_limits<std::int32_t>::max())
            Raise(errOverflow);
        return static_cast<std::int32_t>(n);
    }
    case QMetaType::ULongLong:
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::UChar: {
        const qulonglong n = value.toULongLong();
        if (n > static_cast<qulonglong>(std::numeric_limits<std::int32_t>::max()))
            Raise(errOverflow);
        return static_cast<std::int32_t>(n);
    }
    default:
        Raise(errTypeMismatch);
    }
}

QString Trim(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == QLatin1Char(' '))
        ++first;
    while (last > first && text.at(last - 1) == QLatin1Char(' '))
        --last;
    return text.mid(first, last - first);
}

} // namespace Variants
