// Feeds arbitrary bytes to the rowset reader. Besides crashes and sanitizer reports it checks
// one property: whatever the reader accepts, the writer writes in a form that reads back to
// the same rowset (writing it again gives the same bytes).
#include "wire/ComError.h"
#include "wire/RowsetReader.h"
#include "wire/RowsetWriter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input(reinterpret_cast<const char*>(data), qsizetype(size));
    wire::Rowset rowset;
    try {
        rowset = wire::RowsetReader::read(input);
    } catch (const wire::ComError& e) {
        if (e.number() != wire::err::Unspecified || e.description().isEmpty())
            std::abort();
        return 0;
    }
    const QByteArray once = wire::RowsetWriter::write(rowset);
    wire::Rowset again;
    try {
        again = wire::RowsetReader::read(once);
    } catch (const wire::ComError& e) {
        std::fprintf(stderr, "written rowset unreadable: %s\n", e.what());
        std::abort();
    }
    if (again.rows.size() != rowset.rows.size() || wire::RowsetWriter::write(again) != once) {
        std::fprintf(stderr, "rowset changed on a write and read\n");
        std::abort();
    }
    return 0;
}
