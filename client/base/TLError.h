#pragma once

#include "wire/ComError.h"
#include <QString>
#include <cstdint>
#include <exception>
#include <optional>

// Raised failures carry an error number and a description; a procedure with a trap catches
// them at its end. The numbers are those of wire::err.
using wire::ComError;
namespace err = wire::err;

inline constexpr std::int32_t errTypeMismatch = 13;

// The usual description of an error number ("" for numbers the program never raises itself).
QString ErrorDescription(std::int32_t number);

// Raises ComError(number, description), the description defaulting to ErrorDescription(number).
[[noreturn]] void Raise(std::int32_t number, const QString& description = QString());

// What a trap sees of a failure.
struct Trapped {
    std::int32_t number = 0;
    QString description;
};

// The trap of a procedure: the failure in flight, as number and description. Call it only
// inside a catch block; anything that isn't a ComError is reported as error 5 with its what().
Trapped CurrentError();

// Runs body as a statement under "on error resume next": a failure is swallowed and returned.
template <class F> std::optional<Trapped> Guard(F&& body) noexcept {
    try {
        body();
        return std::nullopt;
    } catch (...) {
        return CurrentError();
    }
}
