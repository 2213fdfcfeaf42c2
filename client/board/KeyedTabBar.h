#pragma once

#include <QString>
#include <QTabBar>

// A tab row whose tabs are known by key as well as by position.
// TabClick reports a choice of tab, by the user or by SelectKey, also of the tab already chosen;
// filling and emptying the row report nothing.
class KeyedTabBar : public QTabBar {
    Q_OBJECT
public:
    explicit KeyedTabBar(QWidget* parent = nullptr);

    void Clear();
    void AddTab(const QString& key, const QString& caption);
    QString KeyAt(int index) const;
    int IndexOfKey(const QString& key) const; // -1 when absent
    // Selects the tab with the key and reports the choice; false, and nothing, when there is none.
    bool SelectKey(const QString& key);
    QString SelectedKey() const { return KeyAt(currentIndex()); }

signals:
    void TabClick();
};
