#include "board/KeyedStatusBar.h"

#include <QEvent>

QLabel* KeyedStatusBar::AddPanel(const QString& key, const QString& toolTip, int stretch) {
    auto* panel = new QLabel(this); // owned by the status bar
    panel->setObjectName(key);
    panel->setToolTip(toolTip);
    panel->setFrameShape(QFrame::StyledPanel);
    panel->installEventFilter(this);
    addPermanentWidget(panel, stretch);
    m_panels.insert(key, panel);
    return panel;
}

bool KeyedStatusBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonRelease)
        if (auto* panel = qobject_cast<QLabel*>(watched);
            panel && m_panels.value(panel->objectName()) == panel)
            emit PanelClick(panel->objectName());
    return QStatusBar::eventFilter(watched, event);
}
