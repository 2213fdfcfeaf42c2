#include "Forms.h"

#include <QApplication>
#include <algorithm>

FormRegistry& FormRegistry::instance() {
    static FormRegistry registry;
    return registry;
}

void FormRegistry::prune() {
    std::erase_if(m_forms, [](const Entry& e) { return e.form.isNull(); });
}

QWidget* FormRegistry::find(const char* typeKey) const {
    for (const auto& e : m_forms)
        if (!e.form.isNull() && (e.typeKey == typeKey || qstrcmp(e.typeKey, typeKey) == 0))
            return e.form.data();
    return nullptr;
}

void FormRegistry::add(const char* typeKey, QWidget* form) {
    prune();
    m_forms.push_back({typeKey, form});
}

void FormRegistry::unload(QWidget* form) {
    if (!form)
        return;
    auto entry = [this, form] {
        return std::find_if(m_forms.begin(), m_forms.end(),
                            [form](const Entry& e) { return e.form.data() == form; });
    };
    auto it = entry();
    if (it == m_forms.end() || it->unloading)
        return;
    it->unloading = true;
    // The unload handler still finds this instance when it touches its own form.
    if (auto* aware = dynamic_cast<UnloadAware*>(form))
        aware->Form_Unload();
    it = entry();
    if (it != m_forms.end())
        m_forms.erase(it); // the next touch makes a new instance, even while this one winds down
    form->hide();
    form->deleteLater();
}

void FormRegistry::unloadAll() {
    // An unload handler may load or unload other forms; go on until none is left to unload.
    for (;;) {
        prune();
        auto it = std::find_if(m_forms.rbegin(), m_forms.rend(),
                               [](const Entry& e) { return !e.unloading; });
        if (it == m_forms.rend())
            break;
        unload(it->form.data());
    }
}

QStringList FormRegistry::loadedNames() const {
    QStringList names;
    for (const auto& e : m_forms)
        if (!e.form.isNull())
            names << e.form->objectName().toLower();
    return names;
}

QWidget* FormRegistry::findByName(const QString& name) const {
    const QString wanted = name.toLower();
    for (const auto& e : m_forms)
        if (!e.form.isNull() && e.form->objectName().toLower() == wanted)
            return e.form.data();
    return nullptr;
}

QWidget* FormRegistry::activeForm() const {
    QWidget* active = QApplication::activeWindow();
    if (!active)
        return nullptr;
    for (const auto& e : m_forms)
        if (!e.form.isNull() && (e.form == active || e.form->isAncestorOf(active)))
            return e.form.data();
    return nullptr;
}
