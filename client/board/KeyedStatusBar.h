#pragma once

#include <QHash>
#include <QLabel>
#include <QStatusBar>
#include <QString>

// A status bar of panels reached by key. A click on a panel reports its key.
class KeyedStatusBar : public QStatusBar {
    Q_OBJECT
public:
    using QStatusBar::QStatusBar;

    QLabel* AddPanel(const QString& key, const QString& toolTip = QString(), int stretch = 0);
    // The panel with the key, or null.
    QLabel* Panel(const QString& key) const { return m_panels.value(key); }

signals:
    void PanelClick(const QString& key);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QHash<QString, QLabel*> m_panels;
};
