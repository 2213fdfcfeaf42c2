#include "TLError.h"

#include <exception>

QString ErrorDescription(std::int32_t number) {
    switch (number) {
    case err::BadArgument:
        return QStringLiteral("Invalid procedure call or argument");
    case 6:
        return QStringLiteral("Overflow");
    case errTypeMismatch:
        return QStringLiteral("Type mismatch");
    case err::NoObject:
        return QStringLiteral("Object variable or With block variable not set");
    case err::DuplicateKey:
        return QStringLiteral("This key is already associated with an element of this collection");
    case err::NoCurrentRecord:
        return QStringLiteral("Either BOF or EOF is True, or the current record has been deleted. "
                              "Requested operation requires a current record.");
    case err::ItemNotFound:
        return QStringLiteral("Item cannot be found in the collection corresponding to the "
                              "requested name or ordinal.");
    case err::HostUnreachable:
        return QStringLiteral("The system cannot locate the resource specified.");
    case err::Unspecified:
        return QStringLiteral("Unspecified error");
    default:
        return QString();
    }
}

void Raise(std::int32_t number, const QString& description) {
    throw ComError(number, description.isEmpty() ? ErrorDescription(number) : description);
}

Trapped CurrentError() {
    try {
        throw;
    } catch (const ComError& e) {
        return {e.number(), e.description()};
    } catch (const std::exception& e) {
        return {err::BadArgument, QString::fromLocal8Bit(e.what())};
    } catch (...) {
        return {err::BadArgument, ErrorDescription(err::BadArgument)};
    }
}
