#include "SettingValues.h"

#include "base/Regional.h"
#include "base/TLError.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

// The text's number; nothing when it is none, or one too large for a double.
std::optional<double> numberOf(const QString& text) {
    if (!Regional::IsNumeric(text))
        return std::nullopt;
    try {
        const double value = Regional::CDbl(text);
        if (std::isfinite(value))
            return value;
    } catch (const ComError&) {
    }
    return std::nullopt;
}

} // namespace

namespace SettingValues {

bool IsNumber(const QString& text) {
    return numberOf(text).has_value();
}

std::int32_t WholeNumber(const QString& text) {
    const auto value = numberOf(text);
    if (!value)
        return 0;
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    return Regional::CLng(std::clamp(*value, lowest, highest));
}

QString NumberOr(const QString& text, std::int32_t fallback) {
    return numberOf(text) ? text : QString::number(fallback);
}

bool Flag(const QString& text, bool fallback) {
    const QString t = text.trimmed();
    if (t.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (t.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    if (const auto value = numberOf(t))
        return *value != 0.0;
    return fallback;
}

QString FlagText(bool value) {
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

} // namespace SettingValues
