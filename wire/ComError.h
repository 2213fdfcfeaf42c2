#pragma once

#include <QString>
#include <cstdint>
#include <stdexcept>

namespace wire {

// Error numbers the program raises and traps. They keep the values of the platform the
// program was first written for, so that logs and reports read the same everywhere.
namespace err {
inline constexpr std::int32_t BadArgument = 5;
inline constexpr std::int32_t NoObject = 91;
inline constexpr std::int32_t DuplicateKey = 457;
inline constexpr std::int32_t NoCurrentRecord = 3021;
inline constexpr std::int32_t ItemNotFound = 3265;
inline constexpr std::int32_t HostUnreachable = static_cast<std::int32_t>(0x800C0005u);
inline constexpr std::int32_t Unspecified = static_cast<std::int32_t>(0x80004005u);
} // namespace err

// A raised failure: an error number and its description, as a trap sees them.
class ComError : public std::runtime_error {
public:
    ComError(std::int32_t number, const QString& description)
        : std::runtime_error(description.toStdString()), m_number(number),
          m_description(description) {}

    std::int32_t number() const noexcept { return m_number; }
    const QString& description() const noexcept { return m_description; }

private:
    std::int32_t m_number;
    QString m_description;
};

} // namespace wire
