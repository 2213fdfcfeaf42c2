#include "board/ExplorerBar.h"

#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

ExplorerBar::ExplorerBar(QWidget* parent) : QWidget(parent), m_layout(new QVBoxLayout(this)) {
    m_layout->setContentsMargins(4, 4, 4, 4);
    m_layout->addStretch(1);
}

void ExplorerBar::Clear() {
    for (const Item& it : m_items)
        if (it.control) {
            it.control->hide();
            it.control->setParent(this);
        }
    for (const Bar& b : m_bars) {
        delete b.title;
        delete b.body;
    }
    m_bars.clear();
    m_items.clear();
}

void ExplorerBar::AddBar(const QString& key, const QString& caption, bool canCollapse,
                         bool startsCollapsed) {
    Bar b;
    b.key = key;
    b.canCollapse = canCollapse;
    b.title = new QToolButton(this);
    b.title->setObjectName(QStringLiteral("bar") + key);
    b.title->setText(caption);
    b.title->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    b.title->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    b.title->setAutoRaise(true);
    QFont bold = b.title->font();
    bold.setBold(true);
    b.title->setFont(bold);
    b.title->setVisible(!caption.isEmpty());
    b.body = new QWidget(this);
    b.items = new QVBoxLayout(b.body);
    b.items->setContentsMargins(8, 2, 4, 6);
    if (canCollapse) {
        b.title->setCheckable(true);
        b.title->setChecked(!startsCollapsed);
        b.title->setArrowType(startsCollapsed ? Qt::RightArrow : Qt::DownArrow);
        QWidget* body = b.body;
        QToolButton* title = b.title;
        connect(b.title, &QToolButton::toggled, body, [body, title](bool open) {
            body->setVisible(open);
            title->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
        });
    }
    b.body->setVisible(!(canCollapse && startsCollapsed));
    const int at = m_layout->count() - 1; // before the closing stretch
    m_layout->insertWidget(at, b.title);
    m_layout->insertWidget(at + 1, b.body);
    m_bars.push_back(b);
}

void ExplorerBar::SetBarColors(const QString& barKey, const QColor& text, const QColor& back) {
    if (Bar* b = bar(barKey))
        b->title->setStyleSheet(QStringLiteral("QToolButton { color: %1; background: %2; }")
                                    .arg(text.name(), back.name()));
}

void ExplorerBar::AddTextItem(const QString& barKey, const QString& itemKey, const QString& text,
                              bool bold) {
    Bar* b = bar(barKey);
    if (!b)
        return;
    auto* label = new QLabel(text, b->body);
    label->setObjectName(itemKey);
    label->setWordWrap(true);
    if (bold) {
        QFont f = label->font();
        f.setBold(true);
        label->setFont(f);
    }
    b->items->addWidget(label);
    m_items.push_back({itemKey, label, nullptr});
}

void ExplorerBar::AddControlItem(const QString& barKey, const QString& itemKey, QWidget* control) {
    Bar* b = bar(barKey);
    if (!b || !control)
        return;
    control->setParent(b->body);
    b->items->addWidget(control);
    control->show();
    m_items.push_back({itemKey, nullptr, control});
}

QWidget* ExplorerBar::ItemControl(const QString& itemKey) const {
    const Item* it = item(itemKey);
    return it ? it->control : nullptr;
}

ExplorerBar::Bar* ExplorerBar::bar(const QString& key) {
    for (Bar& b : m_bars)
        if (b.key == key)
            return &b;
    return nullptr;
}

const ExplorerBar::Item* ExplorerBar::item(const QString& key) const {
    for (const Item& it : m_items)
        if (it.key == key)
            return &it;
    return nullptr;
}
