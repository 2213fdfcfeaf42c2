#include "QueryTool.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    return QueryTool::run(app.arguments());
}
