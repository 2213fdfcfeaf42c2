#pragma once

#include <QDir>
#include <QTest>
#include <QWidget>

// Shows a window and saves a picture of it as build/default/test-screenshots/<name>.png, for
// people to look at; false when the window did not come up or the picture was not saved.
inline bool SaveScreenshot(QWidget* window, const QString& name) {
    const QString folder = qEnvironmentVariable("TAVLO_BINARY_DIR", QDir::tempPath()) +
                           QStringLiteral("/test-screenshots");
    window->show();
    if (!QDir().mkpath(folder) || !QTest::qWaitForWindowExposed(window))
        return false;
    QTest::qWait(50);
    return window->grab().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
}
