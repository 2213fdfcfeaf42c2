#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <concepts>
#include <typeinfo>
#include <utility>
#include <vector>

// Forms are global single instances, made and loaded at their first touch and deleted by their
// unload; the next touch makes a new one. Form<T>() is that touch. A form class sets its
// objectName to its own name ("frmTLSettings") in its constructor. If it has a member
// `void Form_Load()`, that runs right after the instance is registered, so code inside the
// load that touches the same form finds this instance. A form that needs to act at its unload
// also derives from UnloadAware; Form_Unload() runs at the start of the unload.
class UnloadAware {
public:
    virtual ~UnloadAware() = default;
    virtual void Form_Unload() = 0;
};

class FormRegistry {
public:
    static FormRegistry& instance();

    QWidget* find(const char* typeKey) const;
    void add(const char* typeKey, QWidget* form);
    // Unloads (hides at once, deletes later) and forgets the form. Safe inside its own handler.
    void unload(QWidget* form);
    void unloadAll();
    // Lower-cased names of the loaded forms, in load order.
    QStringList loadedNames() const;
    QWidget* findByName(const QString& name) const; // any case
    // The active form: the loaded form that is the active window (or holds it), else nullptr.
    QWidget* activeForm() const;

private:
    struct Entry {
        const char* typeKey;
        QPointer<QWidget> form;
        bool unloading = false;
    };
    void prune();
    std::vector<Entry> m_forms;
};

template <class T>
concept HasFormLoad = requires(T& t) {
    t.Form_Load();
};

template <class T> T& Form() {
    auto& registry = FormRegistry::instance();
    const char* key = typeid(T).name();
    if (auto* existing = registry.find(key))
        return *static_cast<T*>(existing);
    auto* form = new T(); // owned by the registry until its unload
    registry.add(key, form);
    if constexpr (HasFormLoad<T>)
        form->Form_Load();
    return *form;
}

template <class T> bool IsLoaded() {
    return FormRegistry::instance().find(typeid(T).name()) != nullptr;
}

template <class T> T* LoadedForm() {
    return static_cast<T*>(FormRegistry::instance().find(typeid(T).name()));
}

template <class T> void Unload() {
    if (auto* form = LoadedForm<T>())
        FormRegistry::instance().unload(form);
}
