// Reading a full board answer: 5,000 people, about 1.3 MB of rowset XML, read into a
// Recordset and every field of every record read by name, as the board loader does.
#include "BoardAnswer.h"
#include "wire/Recordset.h"
#include "wire/RowsetReader.h"
#include "wire/RowsetWriter.h"

#include <QDir>
#include <QFile>
#include <benchmark/benchmark.h>

using namespace wire;

namespace {

const QByteArray& board() {
    static const QByteArray xml = BoardAnswer::Xml();
    return xml;
}

void BM_ReadBoardAndWalkEveryField(benchmark::State& state) {
    const QByteArray& xml = board();
    const std::vector<Column> columns = BoardAnswer::Columns();
    QStringList names;
    for (const Column& c : columns)
        names << c.name;
    for (auto _ : state) {
        Recordset rs(RowsetReader::read(xml));
        long fields = 0;
        while (!rs.Eof()) {
            for (const QString& name : names) {
                const QVariant v = rs.Fields(name).Value();
                benchmark::DoNotOptimize(v);
                ++fields;
            }
            rs.MoveNext();
        }
        benchmark::DoNotOptimize(fields);
    }
    state.SetBytesProcessed(state.iterations() * xml.size());
    state.counters["xml_bytes"] = double(xml.size());
}
BENCHMARK(BM_ReadBoardAndWalkEveryField)->Unit(benchmark::kMillisecond);

void BM_ReadBoard(benchmark::State& state) {
    const QByteArray& xml = board();
    for (auto _ : state) {
        Rowset r = RowsetReader::read(xml);
        benchmark::DoNotOptimize(r);
    }
    state.SetBytesProcessed(state.iterations() * xml.size());
}
BENCHMARK(BM_ReadBoard)->Unit(benchmark::kMillisecond);

void BM_WriteBoard(benchmark::State& state) {
    const Rowset r = RowsetReader::read(board());
    for (auto _ : state) {
        QByteArray xml = RowsetWriter::write(r);
        benchmark::DoNotOptimize(xml);
    }
}
BENCHMARK(BM_WriteBoard)->Unit(benchmark::kMillisecond);

// The hand-written samples of the tests: small answers of every shape, read one after another.
void BM_ReadSamples(benchmark::State& state) {
    QList<QByteArray> samples;
    const QDir dir(QStringLiteral(TAVLO_WIRE_SAMPLES));
    for (const QString& name : dir.entryList({QStringLiteral("*.xml")}, QDir::Files)) {
        QFile f(dir.filePath(name));
        if (f.open(QIODevice::ReadOnly))
            samples << f.readAll();
    }
    if (samples.isEmpty()) {
        state.SkipWithError("no samples found");
        return;
    }
    for (auto _ : state) {
        for (const QByteArray& xml : samples) {
            Rowset r = RowsetReader::read(xml);
            benchmark::DoNotOptimize(r);
        }
    }
    state.counters["samples"] = double(samples.size());
}
BENCHMARK(BM_ReadSamples)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
