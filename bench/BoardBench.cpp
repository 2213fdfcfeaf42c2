// The board's load of a 5,000-person answer: the gateway call on loopback, reading the rowset,
// the person objects, and filling the sheet, offscreen.
#include "BoardAnswer.h"
#include "TestHttpServer.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "wire/Recordset.h"
#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

void loadBoard(benchmark::State& state, std::int32_t view) {
    TestHttpServer server;
    server.setAnswer({200, "text/xml", BoardAnswer::Xml(), 0});
    TLMain().Settings().SetWebAddress(server.baseUrl());
    TLMain().Settings().SetMaxColumns(5);
    auto& board = Form<frmTLView>();
    board.resize(1000, 700);
    board.ActiveView = view;
    for (auto _ : state) {
        board.LoadGrid(5001, 0, 1, 0, QString());
        if (board.gridStatus->MaxRows() == 0) {
            state.SkipWithError("the board stayed empty");
            break;
        }
    }
    state.counters["people"] = double(modTLMain::colContacts().Count());
    state.counters["rows"] = double(board.gridStatus->MaxRows());
}

void BM_LoadGridStandard(benchmark::State& state) {
    loadBoard(state, frmTLView::kStandardView);
}
BENCHMARK(BM_LoadGridStandard)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_LoadGridMini(benchmark::State& state) {
    loadBoard(state, frmTLView::kMiniView);
}
BENCHMARK(BM_LoadGridMini)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The gateway call and the rowset read alone, for the share of the load that isn't the sheet.
void BM_LoadADOFromWeb(benchmark::State& state) {
    TestHttpServer server;
    server.setAnswer({200, "text/xml", BoardAnswer::Xml(), 0});
    TLMain().Settings().SetWebAddress(server.baseUrl());
    for (auto _ : state) {
        auto rs = TLMain().DataAccess().LoadADOFromWeb(
            QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL"));
        benchmark::DoNotOptimize(rs);
    }
}
BENCHMARK(BM_LoadADOFromWeb)->Unit(benchmark::kMillisecond)->MinTime(2.0);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home; // settings of the run stay out of the user's own
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
