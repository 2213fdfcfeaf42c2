#pragma once

#include <QString>
#include <QTabBar>

// A tab row whose tabs are known by key as well as by position.
class KeyedTabBar : public QTabBar {
    Q_OBJECT
public:
    using QTabBar::QTabBar;

    void Clear();
    void AddTab(const QString& key, const QString& caption);
    QString KeyAt(int index) const;
    int IndexOfKey(const QString& key) const; // -1 when absent
    // Selects the tab with the key; false, and no change, when there is none.
    bool SelectKey(const QString& key);
    QString SelectedKey() const { return KeyAt(currentIndex()); }
};
