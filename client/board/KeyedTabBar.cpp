#include "board/KeyedTabBar.h"

KeyedTabBar::KeyedTabBar(QWidget* parent) : QTabBar(parent) {
    connect(this, &QTabBar::currentChanged, this, &KeyedTabBar::TabClick);
    connect(this, &QTabBar::tabBarClicked, this, [this](int index) {
        if (index >= 0 && index == currentIndex())
            emit TabClick();
    });
}

void KeyedTabBar::Clear() {
    const QSignalBlocker quiet(this); // emptying the row is no choice of the user
    while (count() > 0)
        removeTab(count() - 1);
}

void KeyedTabBar::AddTab(const QString& key, const QString& caption) {
    const QSignalBlocker quiet(this);
    const int index = addTab(caption);
    setTabData(index, key);
}

QString KeyedTabBar::KeyAt(int index) const {
    return index < 0 ? QString() : tabData(index).toString();
}

int KeyedTabBar::IndexOfKey(const QString& key) const {
    for (int i = 0; i < count(); ++i)
        if (tabData(i).toString() == key)
            return i;
    return -1;
}

bool KeyedTabBar::SelectKey(const QString& key) {
    const int index = IndexOfKey(key);
    if (index < 0)
        return false;
    if (index == currentIndex())
        emit TabClick();
    else
        setCurrentIndex(index);
    return true;
}
