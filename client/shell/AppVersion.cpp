#include "shell/AppVersion.h"

namespace AppVersion {

std::int16_t Major() {
    return TAVLO_VERSION_MAJOR;
}
std::int16_t Minor() {
    return TAVLO_VERSION_MINOR;
}
std::int16_t Revision() {
    return TAVLO_VERSION_REVISION;
}

QString Text() {
    return QStringLiteral("%1.%2.%3").arg(Major()).arg(Minor()).arg(Revision());
}

} // namespace AppVersion
