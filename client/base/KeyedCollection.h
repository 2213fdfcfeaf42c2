#pragma once

#include "TLError.h"
#include <QHash>
#include <QString>
#include <memory>
#include <vector>

// A collection of shared objects addressed 1-based by position or by a text key (keys match
// without regard to case). A duplicate key raises 457, a missing key or position raises 5.
template <class T> class KeyedCollection {
public:
    using Item = std::shared_ptr<T>;

    long Count() const { return static_cast<long>(m_items.size()); }

    void Add(Item item, const QString& key = QString()) {
        const QString folded = key.toLower();
        if (!folded.isEmpty()) {
            if (m_index.contains(folded))
                Raise(err::DuplicateKey);
            m_index.insert(folded, m_items.size());
        }
        m_items.push_back({std::move(item), folded});
    }

    const Item& Item_(long index) const {
        if (index < 1 || index > Count())
            Raise(err::BadArgument);
        return m_items[static_cast<size_t>(index - 1)].item;
    }
    const Item& Item_(const QString& key) const {
        const long at = find(key);
        if (at < 0)
            Raise(err::BadArgument);
        return m_items[static_cast<size_t>(at)].item;
    }
    const Item& operator[](long index) const { return Item_(index); }
    const Item& operator[](const QString& key) const { return Item_(key); }

    bool Contains(const QString& key) const { return find(key) >= 0; }

    void Remove(long index) {
        if (index < 1 || index > Count())
            Raise(err::BadArgument);
        m_items.erase(m_items.begin() + (index - 1));
        reindex();
    }
    void Remove(const QString& key) {
        const long at = find(key);
        if (at < 0)
            Raise(err::BadArgument);
        m_items.erase(m_items.begin() + at);
        reindex();
    }
    void Clear() {
        m_items.clear();
        m_index.clear();
    }

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

private:
    struct Entry {
        Item item;
        QString key; // lower-cased; empty when added without a key
    };
    long find(const QString& key) const {
        const auto it = m_index.constFind(key.toLower());
        return it == m_index.cend() ? -1 : static_cast<long>(it.value());
    }
    void reindex() {
        m_index.clear();
        for (size_t i = 0; i < m_items.size(); ++i)
            if (!m_items[i].key.isEmpty())
                m_index.insert(m_items[i].key, i);
    }
    std::vector<Entry> m_items;
    QHash<QString, size_t> m_index; // lower-cased key -> position
};
