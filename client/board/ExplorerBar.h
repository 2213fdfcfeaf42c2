#pragma once

#include <QString>
#include <QWidget>
#include <vector>

class QLabel;
class QToolButton;
class QVBoxLayout;

// A column of captioned bars, each holding items: caption lines (type 1) or hosted controls
// (type 2). Bars and items are reached by key. A collapsible bar opens and closes on a click of
// its title. Clearing gives the hosted controls back to the explorer bar, hidden, so the owner
// can host them again with their content intact.
class ExplorerBar : public QWidget {
    Q_OBJECT
public:
    static constexpr int kItemText = 1;
    static constexpr int kItemControl = 2;

    explicit ExplorerBar(QWidget* parent = nullptr);

    void SetRedraw(bool redraw) { setUpdatesEnabled(redraw); }
    void Clear();
    // Adds a bar at the end. A bar that can't be collapsed has no arrow and stays open.
    void AddBar(const QString& key, const QString& caption, bool canCollapse,
                bool startsCollapsed = false);
    // The title band's text and back colours.
    void SetBarColors(const QString& barKey, const QColor& text, const QColor& back);
    void AddTextItem(const QString& barKey, const QString& itemKey, const QString& text,
                     bool bold = false);
    void AddControlItem(const QString& barKey, const QString& itemKey, QWidget* control);

    QWidget* ItemControl(const QString& itemKey) const;
    int BarCount() const { return static_cast<int>(m_bars.size()); }

private:
    struct Item {
        QString key;
        QLabel* label = nullptr;
        QWidget* control = nullptr;
    };
    struct Bar {
        QString key;
        QToolButton* title = nullptr;
        QWidget* body = nullptr;
        QVBoxLayout* items = nullptr;
        bool canCollapse = true;
    };
    Bar* bar(const QString& key);
    const Item* item(const QString& key) const;

    QVBoxLayout* m_layout;
    std::vector<Bar> m_bars;
    std::vector<Item> m_items;
};
