#pragma once

#include "base/KeyedCollection.h"
#include <QString>
#include <memory>

class QComboBox;

// The organisation's lists, loaded at sign-in: statuses and groups into the shared lists,
// locations into the settings dialog's combo box.
void LoadAvailableStatuses();
void LoadAvailableGroups(const QString& organizationKey);
void LoadAvailableLocations(QComboBox* cboLocation);
void LoadLocationSetting();

// An item of a collection, or null when the key isn't there; never raises.
template <class T>
std::shared_ptr<T> GetObjectFromCollection(const KeyedCollection<T>& collection,
                                           const QString& key) {
    if (!collection.Contains(key))
        return nullptr;
    return collection[key];
}
