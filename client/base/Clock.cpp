#include "Clock.h"

namespace {
QDateTime& fixed() {
    static QDateTime moment;
    return moment;
}
} // namespace

namespace Clock {

QDateTime Now() {
    return fixed().isValid() ? fixed() : QDateTime::currentDateTime();
}

QDate Today() {
    return Now().date();
}

void SetFixed(const QDateTime& moment) {
    fixed() = moment;
}

void Release() {
    fixed() = QDateTime();
}

} // namespace Clock
