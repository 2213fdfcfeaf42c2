#pragma once

#include <QString>
#include <cstdint>

// The running program's version numbers, fixed at build time.
namespace AppVersion {

std::int16_t Major();
std::int16_t Minor();
std::int16_t Revision();
// "major.minor.revision"
QString Text();

} // namespace AppVersion
