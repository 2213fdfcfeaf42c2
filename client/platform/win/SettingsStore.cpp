#include "platform/SettingsStore.h"

#ifdef Q_OS_WIN

#include <qt_windows.h>
#include <vector>

namespace {

HKEY handleOf(RegistryRoot root) {
    return root == RegistryRoot::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

const wchar_t* wide(const QString& text) {
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

// Closes the key on every path out.
class OpenKey {
public:
    OpenKey(RegistryRoot root, const QString& keyPath, REGSAM access, bool create) {
        const LONG result = create
                                ? RegCreateKeyExW(handleOf(root), wide(keyPath), 0, nullptr, 0,
                                                  access, nullptr, &m_key, nullptr)
                                : RegOpenKeyExW(handleOf(root), wide(keyPath), 0, access, &m_key);
        if (result != ERROR_SUCCESS)
            m_key = nullptr;
    }
    ~OpenKey() {
        if (m_key)
            RegCloseKey(m_key);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    HKEY get() const { return m_key; }
    explicit operator bool() const { return m_key != nullptr; }

private:
    HKEY m_key = nullptr;
};

} // namespace

namespace SettingsStore {

std::optional<QString> ReadText(RegistryRoot root, const QString& keyPath,
                                const QString& valueName) {
    OpenKey key(root, keyPath, KEY_QUERY_VALUE, false);
    if (!key)
        return std::nullopt;
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key.get(), wide(valueName), nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS ||
        type != REG_SZ)
        return std::nullopt;
    std::vector<wchar_t> buffer(size / sizeof(wchar_t) + 1, L'\0');
    DWORD read = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
    if (RegQueryValueExW(key.get(), wide(valueName), nullptr, &type,
                         reinterpret_cast<BYTE*>(buffer.data()), &read) != ERROR_SUCCESS ||
        type != REG_SZ)
        return std::nullopt;
    const qsizetype chars = static_cast<qsizetype>(read / sizeof(wchar_t));
    QString text = QString::fromWCharArray(buffer.data(), chars);
    // The stored data usually ends with its terminator; the caller cuts at the first NUL.
    while (text.endsWith(QChar(u'\0')))
        text.chop(1);
    return text;
}

bool CreateKey(RegistryRoot root, const QString& keyPath) {
    return static_cast<bool>(OpenKey(root, keyPath, KEY_WRITE, true));
}

bool WriteText(RegistryRoot root, const QString& keyPath, const QString& valueName,
               const QString& value) {
    OpenKey key(root, keyPath, KEY_WRITE, true);
    if (!key)
        return false;
    const DWORD bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key.get(), wide(valueName), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(value.utf16()), bytes) == ERROR_SUCCESS;
}

bool DeleteValue(RegistryRoot root, const QString& keyPath, const QString& valueName) {
    OpenKey key(root, keyPath, KEY_ALL_ACCESS, false);
    if (!key)
        return false;
    return RegDeleteValueW(key.get(), wide(valueName)) == ERROR_SUCCESS;
}

} // namespace SettingsStore

#endif
